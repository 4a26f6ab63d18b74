#include "VxDSSource/pages/BrowserPage.h"

#include "support/directshow/Gate.h"
#include "unit/VxDSSource/pages/PageFixture.h"
#include "unit/VxDSSource/pages/ScriptedSource.h"

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <thread>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Clock = std::chrono::steady_clock;

/// The page with a control interface that has the features of the test.
class BrowserPageTest : public PageFixture {
protected:
    BrowserPageTest()
    {
        source.features[0] = {{L"MACAddress", L"root\\Camera", L"String", L"02-00-00-00-00-01"}};
        source.features[1] = {{L"Width", L"root\\ImageFormatControl", L"Integer", L"640"}};
        source.features[2] = {{L"BlockCount", L"root\\Statistics", L"Integer", L"5"}};
    }

    void Show()
    {
        m_page.emplace(NewPage<BrowserPage>());
        ASSERT_EQ(m_page->Connect(source), S_OK);
        m_page->Show();
    }
    OpenPage& Page() { return *m_page; }
    HWND Tree() { return Page().Item(IDC_FEATURES); }

    /// The tree in lines, indented by a blank for each level.
    std::vector<std::wstring> Lines()
    {
        std::vector<std::wstring> lines;
        Describe(TreeView_GetRoot(Tree()), 0, lines);
        return lines;
    }

    /// An item by the beginning of its text; null when there is none.
    HTREEITEM Find(const std::wstring& beginning, HTREEITEM first)
    {
        for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(Tree(), item)) {
            if (TextOf(item).starts_with(beginning))
                return item;
            if (HTREEITEM const found = Find(beginning, TreeView_GetChild(Tree(), item)))
                return found;
        }
        return nullptr;
    }
    HTREEITEM Find(const std::wstring& beginning)
    {
        HTREEITEM const item = Find(beginning, TreeView_GetRoot(Tree()));
        EXPECT_NE(item, nullptr);
        return item;
    }
    std::wstring TextOf(HTREEITEM item)
    {
        std::wstring text(2000, L'\0');
        TVITEMW question{};
        question.mask = TVIF_TEXT;
        question.hItem = item;
        question.pszText = text.data();
        question.cchTextMax = 2000;
        ::SendMessageW(Tree(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&question));
        return question.pszText;
    }
    void SelectItem(const std::wstring& beginning)
    {
        TreeView_SelectItem(Tree(), Find(beginning));
        HandleMessages();
    }
    void ChooseSet(int set)
    {
        Page().Select(IDC_FEATURE_SET, set);
        HandleMessages();
    }

    /// Handles messages until a leaf has a text.
    bool WaitForText(const std::wstring& text)
    {
        return WaitUntil([&] { return Find(text, TreeView_GetRoot(Tree())) != nullptr; });
    }
    static bool WaitUntil(const std::function<bool()>& condition)
    {
        const auto end = Clock::now() + kPatience;
        while (!condition()) {
            if (Clock::now() > end)
                return false;
            HandleMessages();
            ::Sleep(5);
        }
        return true;
    }

    ScriptedSource source;

private:
    void Describe(HTREEITEM first, std::size_t level, std::vector<std::wstring>& lines)
    {
        for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(Tree(), item)) {
            const std::wstring text = TextOf(item);
            lines.push_back(std::wstring(level, L' ') + text.substr(0, text.find(L':'))); // without the value
            Describe(TreeView_GetChild(Tree(), item), level + 1, lines);
        }
    }

    std::optional<OpenPage> m_page;
};

TEST_F(BrowserPageTest, BeginsWithTheCommunicationSet)
{
    source.numbers["ParameterArray"] = 2;

    Show();

    EXPECT_THAT(Page().Entries(IDC_FEATURE_SET),
                ElementsAre(L"Communication Parameters", L"Device Parameters", L"Stream Parameters"));
    EXPECT_EQ(Page().Selection(IDC_FEATURE_SET), 0);
    EXPECT_EQ(source.numbers["ParameterArray"], 0u);
    EXPECT_THAT(Lines(), ElementsAre(L"Camera", L" MACAddress"));
}

TEST_F(BrowserPageTest, AsksTheFilterInOrder)
{
    Show();
    Page().Leave();
    source.ForgetCalls();

    Page().Show();

    auto calls = source.TakeCalls();
    calls.resize(8); // then the refresh thread
    EXPECT_THAT(calls,
                ElementsAre("GetParameterArray", "SetParameterArray(0)", "IsParameterArrayAvailable",
                            "GetParameterCount", "GetParameterName(0)", "GetParameterCategory(MACAddress)",
                            "GetParameterType(MACAddress)", "GetParameterVisibility(MACAddress)"));
}

TEST_F(BrowserPageTest, PutsFeaturesUnderTheirCategoriesWithoutTheRoot)
{
    source.features[0] = {{L"Top", L"root"},
                          {L"InCategory", L"root\\Category"},
                          {L"Deep", L"root\\Category\\Inner"},
                          {L"OtherRoot", L"Root\\Category"},
                          {L"NoPath", L""}};

    Show();

    EXPECT_THAT(Lines(), ElementsAre(L"Top", L"Category", L" InCategory", L" Inner", L"  Deep", L"Root",
                                     L" Category", L"  OtherRoot", L"NoPath"));
}

TEST_F(BrowserPageTest, FeaturesOfOneCategoryShareItsNode)
{
    source.features[0] = {{L"A", L"root\\Category"}, {L"B", L"root\\Other"}, {L"C", L"root\\Category"}};

    Show();

    EXPECT_THAT(Lines(), ElementsAre(L"Category", L" A", L" C", L"Other", L" B"));
}

TEST_F(BrowserPageTest, HidesInvisibleFeaturesOnly)
{
    source.features[0] = {{L"Beginner"}, {L"Expert"}, {L"Guru"}, {L"Invisible"}, {L"Beyond"}};
    for (UINT level = 0; level < 5; ++level)
        source.features[0][level].visibility = level;

    Show();

    EXPECT_THAT(Lines(), ElementsAre(L"Beginner", L"Expert", L"Guru"));
}

TEST_F(BrowserPageTest, OpensEveryCategoryAndShowsTheFirst)
{
    source.features[0].clear();
    for (int i = 0; i < 60; ++i)
        source.features[0].push_back({L"F" + std::to_wstring(i), L"root\\C" + std::to_wstring(i % 20)});

    Show();

    HTREEITEM const first = TreeView_GetRoot(Tree());
    for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(Tree(), item))
        EXPECT_NE(TreeView_GetItemState(Tree(), item, TVIS_EXPANDED) & TVIS_EXPANDED, 0u);
    EXPECT_EQ(TreeView_GetFirstVisible(Tree()), first);
}

TEST_F(BrowserPageTest, ShowsValuesAndPlaceholders)
{
    source.features[0] = {{L"Value", L"root", L"Integer", L"42"},
                          {L"Absent", L"root", L"Integer", L"1", FALSE, FALSE, FALSE},
                          {L"Secret", L"root", L"Integer", L"1", TRUE, FALSE, TRUE},
                          {L"Run", L"root", L"Command", L"", TRUE, FALSE, TRUE},
                          {L"Blocked", L"root", L"Command", L"", TRUE, FALSE, FALSE},
                          {L"Empty", L"root", L"String", L""}};

    Show();

    EXPECT_TRUE(WaitForText(L"Value: 42"));
    EXPECT_TRUE(WaitForText(L"Absent: {Not Available}"));
    EXPECT_TRUE(WaitForText(L"Secret: {Not Readable}"));
    EXPECT_TRUE(WaitForText(L"Run: {Command}"));
    EXPECT_TRUE(WaitForText(L"Blocked: {Not Readable}"));
    EXPECT_TRUE(WaitForText(L"Empty: "));
    EXPECT_FALSE(Page().IsDirty());
}

TEST_F(BrowserPageTest, FollowsValuesThatChange)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));

    source.Change([&] { source.features[0][0].value = L"changed"; });

    EXPECT_TRUE(WaitForText(L"MACAddress: changed"));
}

TEST_F(BrowserPageTest, ReadsEachFeatureOnceASecondAtMost)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));
    source.ForgetCalls();
    const auto start = Clock::now();
    int passes = 0;
    ASSERT_TRUE(WaitUntil([&] {
        passes += static_cast<int>(source.TakeCalls("GetParameterValue").size());
        return passes >= 2;
    }));

    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(900)) << "two passes are a second apart";
}

TEST_F(BrowserPageTest, TextIsSetOnlyWhenItChanged)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));
    ::ValidateRect(Tree(), nullptr);
    HTREEITEM const leaf = Find(L"MACAddress");

    ::SendMessageW(Page().Window(), WM_USER + 0x1000, 0, reinterpret_cast<LPARAM>(leaf));

    EXPECT_FALSE(::GetUpdateRect(Tree(), nullptr, FALSE)) << "an unchanged value is not drawn again";
}

TEST_F(BrowserPageTest, MessageForAnUnknownLeafDoesNothing)
{
    Show();
    ::SendMessageW(Page().Window(), WM_USER + 0x1000, 0, 12345);
    EXPECT_THAT(Lines(), ElementsAre(L"Camera", L" MACAddress"));
}

TEST_F(BrowserPageTest, SelectedCategoryDisablesEverything)
{
    Show();
    SelectItem(L"MACAddress");
    ASSERT_TRUE(Page().IsEnabled(IDC_SET));

    SelectItem(L"Camera");

    EXPECT_FALSE(Page().IsEnabled(IDC_SET));
    EXPECT_FALSE(Page().IsEnabled(IDC_EXECUTE));
    EXPECT_FALSE(Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"");
}

TEST_F(BrowserPageTest, NothingIsEnabledBeforeAnythingIsSelected)
{
    Show();

    EXPECT_FALSE(Page().IsEnabled(IDC_SET) || Page().IsEnabled(IDC_EXECUTE) || Page().IsEnabled(IDC_VALUE));
}

TEST_F(BrowserPageTest, SelectedCommandCanBeExecutedOnly)
{
    source.features[0] = {{L"Run", L"root", L"Command", L"x", TRUE, TRUE, TRUE}};
    Show();

    SelectItem(L"Run");

    EXPECT_TRUE(Page().IsEnabled(IDC_EXECUTE));
    EXPECT_FALSE(Page().IsEnabled(IDC_SET));
    EXPECT_FALSE(Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"");
}

TEST_F(BrowserPageTest, SelectedFeatureShowsItsValueAndIsSetWhereItIsWritable)
{
    source.features[0] = {{L"Writable", L"root", L"Integer", L"7"},
                          {L"ReadOnly", L"root", L"Integer", L"8", TRUE, TRUE, FALSE},
                          {L"WriteOnly", L"root", L"Integer", L"9", TRUE, FALSE, TRUE}};
    Show();

    SelectItem(L"Writable");
    EXPECT_TRUE(Page().IsEnabled(IDC_SET) && Page().IsEnabled(IDC_VALUE));
    EXPECT_FALSE(Page().IsEnabled(IDC_EXECUTE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"7");

    SelectItem(L"ReadOnly");
    EXPECT_FALSE(Page().IsEnabled(IDC_SET) || Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"8");

    SelectItem(L"WriteOnly");
    EXPECT_TRUE(Page().IsEnabled(IDC_SET) && Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"");
}

TEST_F(BrowserPageTest, ValueBoxOffersTheEntriesSortedAndKeepsItsText)
{
    source.features[0] = {{L"Format", L"root", L"Enum", L"Mono8"}, {L"Plain", L"root", L"Integer", L"1"}};
    source.features[0][0].entries = {L"RGB8", L"BayerRG8", L"Mono8"};
    Show();
    SelectItem(L"Format");

    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, TRUE, 0);
    HandleMessages();

    EXPECT_THAT(Page().Entries(IDC_VALUE), ElementsAre(L"BayerRG8", L"Mono8", L"RGB8"));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"Mono8");
    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, FALSE, 0);

    SelectItem(L"Plain");
    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, TRUE, 0);
    EXPECT_THAT(Page().Entries(IDC_VALUE), IsEmpty());
    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, FALSE, 0);
}

TEST_F(BrowserPageTest, SetWritesTheTextOfTheValueBox)
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

TEST_F(BrowserPageTest, ExecuteRunsTheCommand)
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

TEST_F(BrowserPageTest, RefusedValueIsToldWithItsReason)
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

TEST_F(BrowserPageTest, RefusedValueWithoutAReasonIsToldAlone)
{
    source.features[0][0].writing = E_INVALIDARG;
    Show();
    SelectItem(L"MACAddress");
    MessageBoxReader box(::GetCurrentThreadId());

    Page().Click(IDC_SET);

    EXPECT_EQ(box.text, L"Operation failed.");
}

TEST_F(BrowserPageTest, RefusedCommandIsToldWithItsReason)
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

TEST_F(BrowserPageTest, ChoosingAnotherSetShowsItsFeatures)
{
    Show();
    SelectItem(L"MACAddress");

    ChooseSet(1);

    EXPECT_THAT(Lines(), ElementsAre(L"ImageFormatControl", L" Width"));
    EXPECT_EQ(source.numbers["ParameterArray"], 1u);
    EXPECT_FALSE(Page().IsEnabled(IDC_SET) || Page().IsEnabled(IDC_VALUE)) << "nothing is selected there";
    EXPECT_TRUE(WaitForText(L"Width: 640"));
}

TEST_F(BrowserPageTest, ChoosingTheSetThatIsShownRebuildsNothing)
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

TEST_F(BrowserPageTest, SetThatIsNotThereShowsAnEmptyTree)
{
    source.isThere = {true, false, true};
    Show();

    ChooseSet(1);

    EXPECT_THAT(Lines(), IsEmpty());
    source.ForgetCalls();
    ::Sleep(150); // nobody reads: three times what a thread needs to stop
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(BrowserPageTest, SetThatComesLaterIsShownWhenItIsChosenAgain)
{
    source.isThere = {true, false, true};
    Show();
    ChooseSet(1);
    source.isThere = {true, true, true};

    ChooseSet(1);

    EXPECT_THAT(Lines(), ElementsAre(L"ImageFormatControl", L" Width"));
}

TEST_F(BrowserPageTest, SetWithoutVisibleFeaturesOnlyWaits)
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

TEST_F(BrowserPageTest, ComingBackShowsTheCommunicationSetAgain)
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

TEST_F(BrowserPageTest, NoThreadReadsAfterThePageIsLeft)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));

    Page().Leave();

    source.ForgetCalls();
    ::Sleep(150);
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(BrowserPageTest, PageThatLosesItsFilterWhileItIsShownReadsNoMore)
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

TEST_F(BrowserPageTest, LeavingWaitsForTheCallThatIsUnderWayAndNoLonger)
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

TEST_F(BrowserPageTest, SwitchingSetsFiftyTimesWhileValuesChangeShowsTheLastOne)
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

TEST_F(BrowserPageTest, LongValueIsShownToItsLimitAndNotDrawnAgain)
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

TEST_F(BrowserPageTest, FeatureThatIsGoneIsNotAvailable)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));

    source.Change([&] { source.features[0].clear(); });

    EXPECT_TRUE(WaitForText(L"MACAddress: {Not Available}"));
}

TEST_F(BrowserPageTest, RefusesWhatIsNotOurFilter)
{
    TestObject<IUnknown> other;
    OpenPage page(NewPage<BrowserPage>());

    EXPECT_EQ(page.Connect(other), E_NOINTERFACE);
    EXPECT_EQ(static_cast<CBasePropertyPage&>(page.Page()).OnConnect(nullptr), E_POINTER);
}

TEST_F(BrowserPageTest, ShowsTheFeaturesOfTheRealFilter)
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
