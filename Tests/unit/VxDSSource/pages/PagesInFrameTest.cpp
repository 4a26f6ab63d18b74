// The pages in the system's own property frame, with the scripted camera behind the filter, driven from
// another thread.

#include "BaseClasses/ModuleEntryPoints.h"
#include "VxDSSource/filter/DefaultSettings.h"

#include "support/directshow/Gate.h"
#include "support/screen/PropertyFrame.h"
#include "unit/VxDSSource/pages/PageFixture.h"
#include "unit/VxDSSource/pages/ScriptedSource.h"

#include <olectl.h>

#include <gmock/gmock.h>

#include <optional>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Tab = PropertyFrame::Tab;

class PagesInFrameTest : public PageFixture {
protected:
    ~PagesInFrameTest() override { m_frame.reset(); } // before the filter

    PropertyFrame& Open(IUnknown& object)
    {
        g_hInst = ::GetModuleHandleW(nullptr);
        m_frame.emplace([&object](HANDLE) { return Show(object); });
        return *m_frame;
    }
    HWND OpenParameters() { return Open(Filter()).GoTo(Tab::Parameters); }
    HWND OpenBrowser() { return Open(m_source).GoTo(Tab::Browser); }
    PropertyFrame& Frame() { return *m_frame; }

    static HWND Item(HWND page, int id)
    {
        HWND const item = ::GetDlgItem(page, id);
        EXPECT_NE(item, nullptr) << id;
        return item;
    }
    static bool IsEnabled(HWND page, int id) { return ::IsWindowEnabled(Item(page, id)) != FALSE; }
    static bool IsChecked(HWND page, int id)
    {
        return ::SendMessageW(Item(page, id), BM_GETCHECK, 0, 0) == BST_CHECKED;
    }
    static void Click(HWND page, int id)
    {
        ASSERT_TRUE(IsEnabled(page, id)) << id;
        ::SendMessageW(Item(page, id), BM_CLICK, 0, 0);
    }
    static void Type(HWND page, int id, const wchar_t* text)
    {
        ::SendMessageW(Item(page, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    }
    static int Selection(HWND page, int id)
    {
        return static_cast<int>(::SendMessageW(Item(page, id), CB_GETCURSEL, 0, 0));
    }
    UINT Number(HRESULT (STDMETHODCALLTYPE IVxDSSource::*getter)(UINT*))
    {
        UINT number = 0;
        EXPECT_EQ((Control().*getter)(&number), S_OK);
        return number;
    }
    /// What the message box says, which is closed then; empty when none comes.
    std::wstring RefusalOf(HWND page, int button)
    {
        ::PostMessageW(Item(page, button), BM_CLICK, 0, 0); // it returns when the box is closed
        HWND const box = Frame().WaitForMessageBox();
        if (box == nullptr)
            return {};
        const std::wstring text = TextOfControl(::GetDlgItem(box, 0xFFFF));
        ::PostMessageW(box, WM_COMMAND, IDOK, 0);
        EXPECT_TRUE(WaitUntil([&] { return !::IsWindow(box); }));
        return text;
    }

    ScriptedSource m_source;

private:
    static HRESULT Show(IUnknown& object)
    {
        CLSID pages[] = {CLSID_ParametersPage, CLSID_BrowserPage, CLSID_AboutPage};
        std::vector<DWORD> cookies;
        for (const CLSID& page : pages) {
            VxComPtr<IUnknown> factory;
            EXPECT_EQ(::DllGetClassObject(page, IID_IUnknown, factory.PutVoid()), S_OK);
            EXPECT_EQ(::CoRegisterClassObject(page, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                              &cookies.emplace_back()),
                      S_OK);
        }
        IUnknown* objects[] = {&object};
        const HRESULT result = ::OleCreatePropertyFrame(nullptr, 0, 0, L"the test", 1, objects, 3, pages,
                                                        LOCALE_USER_DEFAULT, 0, nullptr);
        for (const DWORD cookie : cookies)
            EXPECT_EQ(::CoRevokeClassObject(cookie), S_OK);
        return result;
    }

    std::optional<PropertyFrame> m_frame;
};

TEST_F(PagesInFrameTest, RoleOutOfRangeShowsTheControllerAndAppliesRoleZero)
{
    ASSERT_EQ(Control().SetRole(5), S_OK);
    HWND const page = OpenParameters();
    EXPECT_TRUE(IsChecked(page, IDC_ROLE_CONTROLLER));
    Type(page, IDC_BUFFER_COUNT, L"8");

    EXPECT_EQ(Frame().Apply(page), S_OK);

    EXPECT_EQ(Number(&IVxDSSource::GetRole), 0u);
    EXPECT_EQ(Number(&IVxDSSource::GetBufferCount), 8u);
}

TEST_F(PagesInFrameTest, RolesEnableTheirFields)
{
    HWND const page = OpenParameters();

    Click(page, IDC_ROLE_UNICAST);
    EXPECT_TRUE(IsEnabled(page, IDC_UNICAST_PORT) && IsEnabled(page, IDC_STREAM_CHANNEL));
    EXPECT_FALSE(IsEnabled(page, IDC_MULTICAST_ADDRESS) || IsEnabled(page, IDC_MULTICAST_PORT));
    EXPECT_FALSE(IsEnabled(page, IDC_SOURCE));

    Click(page, IDC_ROLE_MULTICAST);
    EXPECT_TRUE(IsEnabled(page, IDC_MULTICAST_ADDRESS) && IsEnabled(page, IDC_MULTICAST_PORT) &&
                IsEnabled(page, IDC_STREAM_CHANNEL));
    EXPECT_FALSE(IsEnabled(page, IDC_UNICAST_PORT));

    Click(page, IDC_ROLE_CONTROLLER);
    EXPECT_FALSE(IsEnabled(page, IDC_UNICAST_PORT) || IsEnabled(page, IDC_MULTICAST_ADDRESS) ||
                 IsEnabled(page, IDC_MULTICAST_PORT) || IsEnabled(page, IDC_STREAM_CHANNEL));
}

TEST_F(PagesInFrameTest, SourceListIsEnabledInEveryRoleWhenItHasEntries)
{
    TheCamera().device->AddEnum("SourceSelector", {"Source0", "Source1"});
    Connect();
    HWND const page = OpenParameters();
    for (const int role : {IDC_ROLE_UNICAST, IDC_ROLE_MULTICAST, IDC_ROLE_CONTROLLER}) {
        Click(page, role);
        EXPECT_TRUE(IsEnabled(page, IDC_SOURCE));
    }
    EXPECT_THAT(EntriesOf(Item(page, IDC_SOURCE)), ElementsAre(L"Source0", L"Source1"));
}

TEST_F(PagesInFrameTest, StoredKernelSevenAndPixelTypeTwoShowNothingAndStay)
{
    ASSERT_TRUE(vxds::DefaultSettings().Write(L"double;text:kernelsize=7;text:outputpixeltype=2", L"kept"));
    HWND const page = OpenParameters();
    EXPECT_EQ(Selection(page, IDC_KERNEL_SIZE), -1);
    EXPECT_EQ(Selection(page, IDC_OUTPUT_TYPE), -1);
    Type(page, IDC_BUFFER_COUNT, L"8");

    EXPECT_EQ(Frame().Apply(page), S_OK);

    EXPECT_EQ(Number(&IVxDSSource::GetKernelSize), 7u);
    EXPECT_EQ(Number(&IVxDSSource::GetOutputPixelType), 2u);
}

TEST_F(PagesInFrameTest, StoredKernelFourShowsThreeAndAppliesThree)
{
    ASSERT_TRUE(vxds::DefaultSettings().Write(L"double;text:kernelsize=4", L"kept"));
    HWND const page = OpenParameters();
    EXPECT_EQ(Selection(page, IDC_KERNEL_SIZE), 1);
    Type(page, IDC_BUFFER_COUNT, L"8");

    EXPECT_EQ(Frame().Apply(page), S_OK);

    EXPECT_EQ(Number(&IVxDSSource::GetKernelSize), 3u);
}

TEST_F(PagesInFrameTest, ListsOnlyUsableCamerasByModelAndConnectionId)
{
    TheCamera().found = {{"192.168.0.12", "Cam-200", 0, true},
                         {"2", "Wrong subnet", 0, false},
                         {"3", "Kind 1", 1, true},
                         {"4", "Kind 2", 2, true}};

    HWND const page = OpenParameters();

    EXPECT_THAT(EntriesOf(Item(page, IDC_DEVICE)), ElementsAre(L"Cam-200 [192.168.0.12]"));
}

TEST_F(PagesInFrameTest, UseCurrentStoresWhatIsAppliedMarksThePageDirtyAndTakesTheEditBack)
{
    ASSERT_EQ(Control().SetBufferCount(16), S_OK);
    HWND const page = OpenParameters();
    EXPECT_FALSE(Frame().IsDirty(page));
    Type(page, IDC_BUFFER_COUNT, L"99");

    Click(page, IDC_USE_CURRENT);

    EXPECT_TRUE(Frame().IsDirty(page));
    EXPECT_EQ(TextOfControl(Item(page, IDC_BUFFER_COUNT)), L"16");
    const auto saved = vxds::DefaultSettings().Load();
    ASSERT_TRUE(saved);
    EXPECT_NE(saved->configuration.find(L"text:buffercount=16;"), std::wstring::npos);
}

TEST_F(PagesInFrameTest, LeavingAndReturningKeepsWhatWasNotApplied)
{
    HWND const page = OpenParameters();
    Type(page, IDC_BUFFER_COUNT, L"99");
    auto* const object = reinterpret_cast<IPropertyPage*>(::GetWindowLongPtrW(page, DWLP_USER));
    HWND const parent = ::GetParent(page);

    Frame().Run([&] { // Wine's frame leaves a page only when it is closed
        RECT place{};
        ::GetClientRect(parent, &place);
        EXPECT_EQ(object->Deactivate(), S_OK);
        EXPECT_EQ(object->Activate(parent, &place, TRUE), S_OK);
    });

    EXPECT_EQ(TextOfControl(Item(Frame().GoTo(Tab::Parameters), IDC_BUFFER_COUNT)), L"99");
}

TEST_F(PagesInFrameTest, BrowserShowsCategoriesPlaceholdersAndVisibleFeatures)
{
    m_source.features[0] = {{L"Top", L"root", L"Integer", L"1"},
                            {L"A", L"root\\Category", L"Integer", L"2"},
                            {L"B", L"root\\Category", L"Integer", L"", FALSE, FALSE, FALSE},
                            {L"C", L"root\\Category", L"Integer", L"", TRUE, FALSE, TRUE},
                            {L"D", L"root\\Category", L"Command", L"", TRUE, FALSE, TRUE},
                            {L"Hidden", L"root", L"Integer", L"3"}};
    m_source.features[0][1].visibility = 2;
    m_source.features[0][5].visibility = 3;
    HWND const page = OpenBrowser();
    const TreeReader tree(Item(page, IDC_FEATURES));

    EXPECT_TRUE(WaitUntil([&] { return tree.Shows(L"D", L"{Command}"); }));

    EXPECT_THAT(tree.Leaves(), ElementsAre(L"Top: 1", L"Category\\A: 2", L"Category\\B: {Not Available}",
                                           L"Category\\C: {Not Readable}", L"Category\\D: {Command}"));
    tree.Select(L"A");
    EXPECT_TRUE(IsEnabled(page, IDC_SET));
    tree.Select(L"Category");
    EXPECT_FALSE(IsEnabled(page, IDC_SET) || IsEnabled(page, IDC_EXECUTE) || IsEnabled(page, IDC_VALUE));
    EXPECT_FALSE(Frame().IsDirty(page));
}

TEST_F(PagesInFrameTest, RefusalIsToldWithItsReasonOrAlone)
{
    m_source.features[0] = {{L"A", L"root"}, {L"B", L"root"}, {L"C", L"root", L"Command"}};
    m_source.features[0][0].writing = E_FAIL;
    m_source.features[0][0].reason = L"Out of range.";
    m_source.features[0][1].writing = E_FAIL;
    m_source.features[0][2].writing = E_FAIL;
    m_source.features[0][2].reason = L"Not now.";
    HWND const page = OpenBrowser();
    const TreeReader tree(Item(page, IDC_FEATURES));

    tree.Select(L"A");
    EXPECT_EQ(RefusalOf(page, IDC_SET), L"Operation failed.Out of range.");
    tree.Select(L"B");
    EXPECT_EQ(RefusalOf(page, IDC_SET), L"Operation failed.");
    tree.Select(L"C");
    EXPECT_EQ(RefusalOf(page, IDC_EXECUTE), L"Operation failed.Not now.");
}

TEST_F(PagesInFrameTest, ChoosingTheSetThatIsShownRebuildsNothing)
{
    m_source.features[0] = {{L"A", L"root", L"Integer", L"1"}};
    HWND const page = OpenBrowser();
    const TreeReader tree(Item(page, IDC_FEATURES));
    HTREEITEM const before = tree.Find(L"A");
    m_source.ForgetCalls();

    ChooseEntry(Item(page, IDC_FEATURE_SET), 0);

    EXPECT_EQ(tree.Find(L"A"), before);
    EXPECT_THAT(m_source.TakeCalls("SetParameterArray"), IsEmpty());
    m_source.Change([&] { m_source.features[0][0].value = L"2"; });
    EXPECT_TRUE(WaitUntil([&] { return tree.Shows(L"A", L"2"); })) << "the refresh thread goes on";
}

TEST_F(PagesInFrameTest, ComingBackShowsTheCommunicationSetAgain)
{
    m_source.features[0] = {{L"Link", L"root"}};
    m_source.features[2] = {{L"Stream", L"root"}};
    HWND const page = OpenBrowser();
    ChooseEntry(Item(page, IDC_FEATURE_SET), 2);
    EXPECT_NE(TreeReader(Item(page, IDC_FEATURES)).Find(L"Stream"), nullptr);
    auto* const object = reinterpret_cast<IPropertyPage*>(::GetWindowLongPtrW(page, DWLP_USER));
    HWND const parent = ::GetParent(page);

    Frame().Run([&] {
        RECT place{};
        ::GetClientRect(parent, &place);
        EXPECT_EQ(object->Deactivate(), S_OK);
        EXPECT_EQ(object->Activate(parent, &place, TRUE), S_OK);
    });

    HWND const again = Frame().GoTo(Tab::Browser);
    EXPECT_NE(TreeReader(Item(again, IDC_FEATURES)).Find(L"Link"), nullptr);
    EXPECT_EQ(Selection(again, IDC_FEATURE_SET), 0);
}

TEST_F(PagesInFrameTest, ClosingWaitsForTheCallUnderWayAndNoLonger)
{
    constexpr auto kSlow = std::chrono::milliseconds(600);
    m_source.features[0] = {{L"A", L"root"}, {L"B", L"root"}, {L"C", L"root"}};
    Gate isInside;
    m_source.onCall = [&](const std::string& call) {
        if (call.starts_with("GetParameterAccess")) {
            isInside.Pass();
            std::this_thread::sleep_for(kSlow);
        }
    };
    OpenBrowser();
    ASSERT_TRUE(isInside.WaitFor());

    EXPECT_LT(Frame().Close(), kSlow + std::chrono::milliseconds(550)) << "less than two calls";
    EXPECT_LE(isInside.Count(), 2);
}

TEST_F(PagesInFrameTest, AboutPageIsNeverDirtyAndNeedsNoCamera)
{
    HWND const page = Open(m_source).GoTo(Tab::About);
    EXPECT_EQ(TextOfControl(Item(page, IDC_VERSION)).find(L"Vexa SDK Version "), 0u);
    ::SendMessageW(page, WM_COMMAND, MAKEWPARAM(IDC_VERSION, 0),
                   reinterpret_cast<LPARAM>(Item(page, IDC_VERSION)));

    EXPECT_FALSE(Frame().IsDirty(page));
}

} // namespace
