// What a user does on the parameter browser page, and how its refresh thread goes along.

#include "unit/VxDSSource/pages/BrowserPageFixture.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Clock = std::chrono::steady_clock;

class BrowserPageActionsTest : public BrowserPageFixture {};

TEST_F(BrowserPageActionsTest, SetWritesTheTextOfTheValueBox)
{
    Show();
    SelectItem(L"MACAddress");
    source.ForgetCalls();
    Page().Type(IDC_VALUE, L"new");

    Page().Click(IDC_SET);

    EXPECT_THAT(source.TakeCalls("SetParameterValue"), ElementsAre("SetParameterValue(MACAddress)"));
    EXPECT_EQ(source.features[0][0].value, L"new");
    EXPECT_TRUE(WaitForText(L"MACAddress: new")) << "with the next pass";
    EXPECT_FALSE(Page().IsDirty());
    EXPECT_EQ(Page().Apply(), S_OK);
}

TEST_F(BrowserPageActionsTest, ExecuteRunsTheCommand)
{
    source.features[0] = {{L"Run", L"root", L"Command", L"", TRUE, FALSE, TRUE}};
    Show();
    SelectItem(L"Run");
    source.ForgetCalls();

    Page().Click(IDC_EXECUTE);

    EXPECT_THAT(source.TakeCalls("ExecuteCommand"), ElementsAre("ExecuteCommand(Run)"));
    EXPECT_FALSE(Page().IsDirty());
}

/// Reads and closes the message box that the window thread opens; from a thread of its own.
class MessageBoxReader final {
public:
    explicit MessageBoxReader(DWORD ownerThread)
        : m_thread([this, ownerThread] {
              const auto end = Clock::now() + kPatience;
              while (Clock::now() < end && !m_wasSeen) {
                  ::EnumThreadWindows(ownerThread, &MessageBoxReader::Look, reinterpret_cast<LPARAM>(this));
                  ::Sleep(10);
              }
          })
    {
    }
    ~MessageBoxReader() { m_thread.join(); }
    MessageBoxReader(const MessageBoxReader&) = delete;
    MessageBoxReader& operator=(const MessageBoxReader&) = delete;

    std::wstring text;
    std::wstring caption;
    bool hasOkOnly = false;
    bool hasIcon = false;

private:
    static std::wstring TextOf(HWND window)
    {
        std::wstring text(1000, L'\0');
        text.resize(static_cast<std::size_t>(
            ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
        return text;
    }

    static BOOL CALLBACK LookForIcon(HWND child, LPARAM reader)
    {
        const auto icon = ::SendMessageW(child, STM_GETICON, 0, 0);
        if (icon != 0 && icon == reinterpret_cast<LRESULT>(::LoadIconW(nullptr, IDI_WARNING)))
            reinterpret_cast<MessageBoxReader*>(reader)->hasIcon = true;
        return TRUE;
    }

    static BOOL CALLBACK Look(HWND window, LPARAM reader)
    {
        constexpr int kMessageText = 0xFFFF; // fixed by the system: the text of a message box
        auto& self = *reinterpret_cast<MessageBoxReader*>(reader);
        HWND const text = ::GetDlgItem(window, kMessageText);
        if (!::IsWindowVisible(window) || text == nullptr)
            return TRUE;
        self.text = TextOf(text);
        self.caption = TextOf(window);
        ::EnumChildWindows(window, &MessageBoxReader::LookForIcon, reader);
        const auto isShown = [window](int id) {
            HWND const button = ::GetDlgItem(window, id);
            return button != nullptr && ::IsWindowVisible(button);
        };
        self.hasOkOnly = isShown(IDOK) && !isShown(IDCANCEL) && !isShown(IDYES) && !isShown(IDRETRY);
        self.m_wasSeen = true;
        ::PostMessageW(window, WM_COMMAND, IDOK, 0);
        return FALSE;
    }

    bool m_wasSeen = false;
    std::thread m_thread; // last: uses all of the above
};

TEST_F(BrowserPageActionsTest, RefusedValueIsToldWithItsReason)
{
    source.features[0][0].writing = E_FAIL;
    source.features[0][0].reason = L"The value is out of range.";
    Show();
    SelectItem(L"MACAddress");
    MessageBoxReader box(::GetCurrentThreadId());

    Page().Click(IDC_SET);

    EXPECT_EQ(box.text, L"Operation failed.The value is out of range.");
    EXPECT_EQ(box.caption, L"VxDSSource");
    EXPECT_TRUE(box.hasOkOnly);
    EXPECT_TRUE(box.hasIcon);
}

TEST_F(BrowserPageActionsTest, RefusedValueWithoutAReasonIsToldAlone)
{
    source.features[0][0].writing = E_INVALIDARG;
    Show();
    SelectItem(L"MACAddress");
    MessageBoxReader box(::GetCurrentThreadId());

    Page().Click(IDC_SET);

    EXPECT_EQ(box.text, L"Operation failed.");
}

TEST_F(BrowserPageActionsTest, RefusedCommandIsToldWithItsReason)
{
    source.features[0] = {{L"Run", L"root", L"Command", L"", TRUE, FALSE, TRUE}};
    source.features[0][0].writing = E_FAIL;
    source.features[0][0].reason = L"Busy.";
    Show();
    SelectItem(L"Run");
    MessageBoxReader box(::GetCurrentThreadId());

    Page().Click(IDC_EXECUTE);

    EXPECT_EQ(box.text, L"Operation failed.Busy.");
}

TEST_F(BrowserPageActionsTest, ChoosingAnotherSetShowsItsFeatures)
{
    Show();
    SelectItem(L"MACAddress");

    ChooseSet(1);

    EXPECT_THAT(Lines(), ElementsAre(L"ImageFormatControl", L" Width"));
    EXPECT_EQ(source.numbers["ParameterArray"], 1u);
    EXPECT_FALSE(Page().IsEnabled(IDC_SET) || Page().IsEnabled(IDC_VALUE)) << "nothing is selected there";
    EXPECT_TRUE(WaitForText(L"Width: 640"));
}

TEST_F(BrowserPageActionsTest, ChoosingTheSetThatIsShownRebuildsNothing)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));
    HTREEITEM const before = TreeView_GetRoot(Tree());
    source.ForgetCalls();

    ChooseSet(0);

    EXPECT_EQ(TreeView_GetRoot(Tree()), before);
    EXPECT_THAT(source.TakeCalls("SetParameterArray"), IsEmpty());
    source.Change([&] { source.features[0][0].value = L"still read"; });
    EXPECT_TRUE(WaitForText(L"MACAddress: still read"));
}

TEST_F(BrowserPageActionsTest, SetThatIsNotThereShowsAnEmptyTree)
{
    source.isThere = {true, false, true};
    Show();

    ChooseSet(1);

    EXPECT_THAT(Lines(), IsEmpty());
    source.ForgetCalls();
    ::Sleep(150); // nobody reads: three times what a thread needs to stop
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(BrowserPageActionsTest, SetThatComesLaterIsShownWhenItIsChosenAgain)
{
    source.isThere = {true, false, true};
    Show();
    ChooseSet(1);
    source.isThere = {true, true, true};

    ChooseSet(1);

    EXPECT_THAT(Lines(), ElementsAre(L"ImageFormatControl", L" Width"));
}

TEST_F(BrowserPageActionsTest, SetWithoutVisibleFeaturesOnlyWaits)
{
    source.features[0].clear();
    Show();
    EXPECT_THAT(Lines(), IsEmpty());
    source.ForgetCalls();
    HandleMessages();

    const auto start = Clock::now();
    Page().Leave();

    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_THAT(source.TakeCalls(), Not(Contains(StartsWith("GetParameterAccess"))));
}

TEST_F(BrowserPageActionsTest, ComingBackShowsTheCommunicationSetAgain)
{
    Show();
    ChooseSet(2);
    ASSERT_THAT(Lines(), ElementsAre(L"Statistics", L" BlockCount"));
    Page().Leave();

    Page().Show();

    EXPECT_EQ(Page().Selection(IDC_FEATURE_SET), 0);
    EXPECT_THAT(Lines(), ElementsAre(L"Camera", L" MACAddress"));
    EXPECT_EQ(source.numbers["ParameterArray"], 0u);
}

TEST_F(BrowserPageActionsTest, NoThreadReadsAfterThePageIsLeft)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));

    Page().Leave();

    source.ForgetCalls();
    ::Sleep(150);
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(BrowserPageActionsTest, PageThatLosesItsFilterWhileItIsShownReadsNoMore)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));

    EXPECT_EQ(Page().Page().SetObjects(0, nullptr), S_OK);

    EXPECT_EQ(source.References(), 0);
    source.ForgetCalls();
    ::Sleep(150);
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
    SelectItem(L"MACAddress");
    ChooseSet(1);
    EXPECT_THAT(source.TakeCalls(), IsEmpty()) << "and asks no more";
}

TEST_F(BrowserPageActionsTest, LeavingWaitsForTheCallThatIsUnderWayAndNoLonger)
{
    constexpr auto kSlow = std::chrono::milliseconds(400); // a camera that takes its time
    source.features[0].push_back({L"Second"});
    source.features[0].push_back({L"Third"});
    Gate isInside;
    source.onCall = [&](const std::string& call) {
        if (call.starts_with("GetParameterAccess")) {
            isInside.Pass();
            std::this_thread::sleep_for(kSlow);
        }
    };
    Show();
    ASSERT_TRUE(isInside.WaitFor());

    const auto start = Clock::now();
    Page().Leave();

    EXPECT_LT(Clock::now() - start, kSlow + std::chrono::milliseconds(250)) << "one call, not the whole pass";
    EXPECT_LE(isInside.Count(), 2);
}

TEST_F(BrowserPageActionsTest, SwitchingSetsFiftyTimesWhileValuesChangeShowsTheLastOne)
{
    int number = 0;
    source.onCall = [&](const std::string& call) {
        if (call.starts_with("GetParameterValue"))
            source.Change([&] {
                for (auto& set : source.features)
                    set[0].value = std::to_wstring(++number);
            });
    };
    Show();
    for (int i = 1; i <= 50; ++i) {
        ChooseSet(i % 3);
        EXPECT_EQ(source.numbers["ParameterArray"], static_cast<UINT>(i % 3));
    }

    EXPECT_THAT(Lines(), ElementsAre(L"Statistics", L" BlockCount")) << "50 is 2 more than 16 times 3";
    EXPECT_TRUE(WaitUntil([&] { return TextOf(Find(L"BlockCount")).starts_with(L"BlockCount: "); }));
}

TEST_F(BrowserPageActionsTest, LongValueIsShownToItsLimitAndNotDrawnAgain)
{
    source.features[0][0].value = std::wstring(3000, L'x');
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: xxx"));
    EXPECT_EQ(TextOf(Find(L"MACAddress")).size(), 1024u);
    HTREEITEM const leaf = Find(L"MACAddress");
    ::ValidateRect(Tree(), nullptr);

    ::SendMessageW(Page().Window(), WM_USER + 0x1000, 0, reinterpret_cast<LPARAM>(leaf));

    EXPECT_FALSE(::GetUpdateRect(Tree(), nullptr, FALSE));
}

TEST_F(BrowserPageActionsTest, FeatureThatIsGoneIsNotAvailable)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));

    source.Change([&] { source.features[0].clear(); });

    EXPECT_TRUE(WaitForText(L"MACAddress: {Not Available}"));
}

TEST_F(BrowserPageActionsTest, RefusesWhatIsNotOurFilter)
{
    TestObject<IUnknown> other;
    OpenPage page(NewPage<BrowserPage>());

    EXPECT_EQ(page.Connect(other), E_NOINTERFACE);
    EXPECT_EQ(static_cast<CBasePropertyPage&>(page.Page()).OnConnect(nullptr), E_POINTER);
}

TEST_F(BrowserPageActionsTest, ShowsTheFeaturesOfTheRealFilter)
{
    TheCamera().device->AddEnum("PixelFormat", {"Mono8", "RGB8"});
    Connect();
    OpenPage page(NewPage<BrowserPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);
    page.Show();

    page.Select(IDC_FEATURE_SET, 1);

    HWND const tree = page.Item(IDC_FEATURES);
    EXPECT_TRUE(WaitUntil([&] {
        std::array<wchar_t, 100> text{};
        TVITEMW question{};
        question.mask = TVIF_TEXT;
        question.hItem = TreeView_GetChild(tree, TreeView_GetRoot(tree));
        question.pszText = text.data();
        question.cchTextMax = 100;
        ::SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&question));
        return std::wstring(question.pszText).starts_with(L"Width: ");
    }));
}

} // namespace
