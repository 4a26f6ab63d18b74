// How the pages look: whatever the resolution, nothing is cut off, nothing overlaps, keys and tabs lead
// everywhere. The pictures are for people.

#include "VxDSSource/pages/AboutPage.h"
#include "VxDSSource/pages/BrowserPage.h"
#include "VxDSSource/pages/ParametersPage.h"

#include "support/directshow/Gate.h"
#include "support/screen/DialogLayout.h"
#include "unit/VxDSSource/pages/PageFixture.h"
#include "unit/VxDSSource/pages/ScriptedSource.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cwctype>
#include <set>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PagesLayoutTest : public PageFixture {
protected:
    PagesLayoutTest()
    {
        // As the module's manifest wishes it; a process can say so once.
        ::SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
        TheCamera().found = {{"02-00-00-00-00-01", "SimulatedCamera", 0, true},
                             {"02-00-00-00-00-02", "Camera-4096 GigE RGB Colour 12bit", 0, true}};
        source.numbers = {{"BufferCount", 16},   {"DefaultBufferSize", 4147200},
                          {"DropThreshold", 1},  {"MulticastPort", 1042},
                          {"Width", 1280},       {"Height", 720},
                          {"OutputWidth", 640},  {"OutputHeight", 480},
                          {"UnicastPort", 5000}, {"DiagnosticsEnabled", 1}};
        source.texts = {{"MulticastAddress", L"239.192.1.1"},
                        {"DeviceId", L"02-00-00-00-00-01"},
                        {"ParamSource", L"Source0"},
                        {"DefaultSummary", L"Controlling and receiving from 02-00-00-00-00-01"}};
        source.sources = {L"Source0", L"Source1"};
    }

    /// Name of a picture, which tells the resolution.
    static std::string Named(const std::string& name)
    {
        return name + "-" + std::to_string(::GetDpiForSystem()) + "dpi";
    }

    template <typename Page>
    void Show(OpenPage& page)
    {
        ASSERT_EQ(page.Connect(source), S_OK);
        page.Show();
        // As after a key: the focus and the access keys are drawn.
        ::SendMessageW(page.Frame(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL),
                       0);
    }

    ScriptedSource source;
};

/// What the Tab key passes, beginning with the first control.
std::vector<int> TabOrder(HWND page)
{
    std::vector<int> order;
    HWND const first = ::GetNextDlgTabItem(page, nullptr, FALSE);
    HWND item = first;
    do {
        order.push_back(::GetDlgCtrlID(item));
        item = ::GetNextDlgTabItem(page, item, FALSE);
    } while (item != nullptr && item != first && order.size() < 100);
    return order;
}

/// The letters that are underlined, in small.
std::vector<wchar_t> AccessKeys(HWND page)
{
    std::vector<wchar_t> keys;
    for (HWND item = ::GetWindow(page, GW_CHILD); item != nullptr; item = ::GetWindow(item, GW_HWNDNEXT)) {
        std::array<wchar_t, 200> text{};
        std::array<wchar_t, 50> kind{};
        ::GetWindowTextW(item, text.data(), 200);
        ::GetClassNameW(item, kind.data(), 50);
        const std::wstring caption = text.data();
        const std::size_t sign = caption.find(L'&');
        if (sign != std::wstring::npos && sign + 1 < caption.size() &&
            (std::wstring(kind.data()) == L"Static" || std::wstring(kind.data()) == L"Button"))
            keys.push_back(static_cast<wchar_t>(std::towlower(static_cast<wint_t>(caption[sign + 1]))));
    }
    return keys;
}

void ExpectKeysAreUnique(HWND page)
{
    const auto keys = AccessKeys(page);
    const std::set<wchar_t> different(keys.begin(), keys.end());
    EXPECT_EQ(different.size(), keys.size()) << std::string(keys.begin(), keys.end());
    EXPECT_FALSE(different.contains(L'a')) << "the frame's Apply has this one";
}

/// Every control that Tab stops at shows that it has the focus.
void ExpectFocusIsVisible(const OpenPage& page)
{
    for (const int id : TabOrder(page.Window())) {
        HWND const item = page.Item(id);
        ::SetFocus(nullptr);
        HandleMessages();
        const auto without = WindowPixels(item);
        ::SetFocus(item);
        HandleMessages();
        GUITHREADINFO info{};
        info.cbSize = sizeof(info);
        ::GetGUIThreadInfo(0, &info);
        const bool hasCaret = info.hwndCaret == item || ::IsChild(item, info.hwndCaret);
        EXPECT_TRUE(hasCaret || WindowPixels(item) != without) << id;
    }
}

TEST_F(PagesLayoutTest, ParametersPageShowsEverythingInEveryRole)
{
    OpenPage page(NewPage<ParametersPage>());
    Show<ParametersPage>(page);
    const std::pair<int, const char*> roles[] = {{IDC_ROLE_CONTROLLER, "parameters-controller"},
                                                 {IDC_ROLE_UNICAST, "parameters-unicast"},
                                                 {IDC_ROLE_MULTICAST, "parameters-multicast"}};
    for (const auto& [role, name] : roles) {
        page.Click(role);
        EXPECT_THAT(LayoutDefects(page.Window()), IsEmpty()) << name;
        page.Save(Named(name));
    }
}

TEST_F(PagesLayoutTest, ParametersPageHasRoomForTheLongestTexts)
{
    source.numbers["DefaultBufferSize"] = 2147483647;
    source.numbers["BufferCount"] = 2147483647;
    source.numbers["OutputWidth"] = 65535;
    source.numbers["OutputHeight"] = 65535;
    source.numbers["UnicastPort"] = 65535;
    source.numbers["MulticastPort"] = 65535;
    source.numbers["ParamChannel"] = 65535;
    source.numbers["OutputPixelType"] = 1;
    source.numbers["Role"] = 2;
    source.texts["DeviceId"] = L"02-00-00-00-00-02";
    source.texts["MulticastAddress"] = L"239.255.255.250";
    source.texts["DefaultSummary"] =
        L"Multicasting from " + std::wstring(60, L'W') + L" on group 239.255.255.250:65535";
    OpenPage page(NewPage<ParametersPage>());
    Show<ParametersPage>(page);

    EXPECT_THAT(LayoutDefects(page.Window()), IsEmpty());
    page.Save(Named("parameters-longest"));
}

TEST_F(PagesLayoutTest, ParametersPageIsLeftEmptyWithoutACamera)
{
    TheCamera().found.clear();
    source.sources.clear();
    source.texts.clear();
    OpenPage page(NewPage<ParametersPage>());
    Show<ParametersPage>(page);

    EXPECT_THAT(LayoutDefects(page.Window()), IsEmpty());
    page.Save(Named("parameters-no-camera"));
}

TEST_F(PagesLayoutTest, TabPassesTheParametersPageFromGroupToGroup)
{
    source.numbers["Role"] = 2;
    OpenPage page(NewPage<ParametersPage>());
    Show<ParametersPage>(page);

    EXPECT_THAT(TabOrder(page.Window()),
                ElementsAre(IDC_ROLE_MULTICAST, IDC_MULTICAST_ADDRESS, IDC_MULTICAST_PORT, IDC_BUFFER_COUNT,
                            IDC_DEFAULT_BUFFER_SIZE, IDC_DROP_THRESHOLD, IDC_DIAGNOSTICS, IDC_OUTPUT_TYPE,
                            IDC_OUTPUT_WIDTH, IDC_OUTPUT_HEIGHT, IDC_KERNEL_SIZE, IDC_ZOOM, IDC_DEVICE,
                            IDC_SOURCE, IDC_STREAM_CHANNEL, IDC_USE_CURRENT, IDC_CLEAR, IDC_DEFAULT_SUMMARY));
    ExpectKeysAreUnique(page.Window());
    EXPECT_EQ(AccessKeys(page.Window()).size(), 20u) << "every control that can be edited has one";
}

TEST_F(PagesLayoutTest, ArrowsStayWithinTheRoles)
{
    OpenPage page(NewPage<ParametersPage>());
    Show<ParametersPage>(page);

    HWND item = page.Item(IDC_ROLE_CONTROLLER);
    std::vector<int> passed;
    for (int i = 0; i < 4; ++i) {
        item = ::GetNextDlgGroupItem(page.Window(), item, FALSE);
        passed.push_back(::GetDlgCtrlID(item));
    }

    EXPECT_THAT(passed,
                ElementsAre(IDC_ROLE_UNICAST, IDC_ROLE_MULTICAST, IDC_ROLE_CONTROLLER, IDC_ROLE_UNICAST));
}

TEST_F(PagesLayoutTest, FocusIsVisibleOnTheParametersPage)
{
    source.numbers["Role"] = 2;
    OpenPage page(NewPage<ParametersPage>());
    Show<ParametersPage>(page);

    ExpectFocusIsVisible(page);
    ::SetFocus(page.Item(IDC_USE_CURRENT));
    page.Save(Named("parameters-focus"));
}

TEST_F(PagesLayoutTest, BrowserPageShowsATreeWithItsValues)
{
    source.features[0] = {{L"DeviceModelName", L"root\\DeviceControl", L"String", L"SimulatedCamera"},
                          {L"DeviceReset", L"root\\DeviceControl", L"Command", L"", TRUE, FALSE, TRUE},
                          {L"Width", L"root\\ImageFormatControl", L"Integer", L"640"},
                          {L"PixelFormat", L"root\\ImageFormatControl", L"Enum", L"Mono8"},
                          {L"Secret", L"root\\ImageFormatControl", L"Integer", L"", TRUE, FALSE, TRUE},
                          {L"Absent", L"root\\ImageFormatControl", L"Integer", L"", FALSE, FALSE, FALSE},
                          {L"Long", L"root\\ImageFormatControl", L"String", std::wstring(200, L'W')}};
    source.features[0][3].entries = {L"Mono8", L"Mono16", L"RGB8"};
    OpenPage page(NewPage<BrowserPage>());
    Show<BrowserPage>(page);
    HWND const tree = page.Item(IDC_FEATURES);
    HTREEITEM const control = TreeView_GetRoot(tree);
    HTREEITEM const format = TreeView_GetNextSibling(tree, control);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(300); // a pass takes less
    while (std::chrono::steady_clock::now() < end)
        HandleMessages();
    EXPECT_THAT(LayoutDefects(page.Window()), IsEmpty());
    page.Save(Named("browser-nothing-selected"));

    HTREEITEM const pixelFormat =
        TreeView_GetNextSibling(tree, TreeView_GetChild(tree, format)); // the second there
    TreeView_SelectItem(tree, pixelFormat);
    ::SetFocus(tree);
    page.Save(Named("browser-enumeration"));
    EXPECT_THAT(TabOrder(page.Window()), ElementsAre(IDC_FEATURE_SET, IDC_FEATURES, IDC_VALUE, IDC_SET));
    ExpectKeysAreUnique(page.Window());
    EXPECT_EQ(AccessKeys(page.Window()).size(), 2u);
    ExpectFocusIsVisible(page);

    TreeView_SelectItem(tree, TreeView_GetNextSibling(tree, TreeView_GetChild(tree, control)));
    ::SetFocus(page.Item(IDC_EXECUTE));
    page.Save(Named("browser-command"));
    TreeView_SelectItem(tree, format);
    ::SetFocus(tree);
    page.Save(Named("browser-category"));
}

TEST_F(PagesLayoutTest, BrowserPageIsEmptyWithoutACamera)
{
    source.isThere = {false, false, false};
    OpenPage page(NewPage<BrowserPage>());
    Show<BrowserPage>(page);

    EXPECT_THAT(LayoutDefects(page.Window()), IsEmpty());
    page.Save(Named("browser-no-camera"));
}

TEST_F(PagesLayoutTest, AboutPageHasRoomForItsTexts)
{
    OpenPage page(NewPage<AboutPage>());
    Show<AboutPage>(page);

    EXPECT_THAT(LayoutDefects(page.Window()), IsEmpty());
    page.Save(Named("about"));
}

TEST_F(PagesLayoutTest, PagesHaveTheSizesOfTheirTemplates)
{
    const auto expectSize = [](CUnknown* made, LONG width, LONG height) {
        OpenPage page(made);
        ScriptedSource filter;
        PROPPAGEINFO info{};
        ASSERT_EQ(page.Page().GetPageInfo(&info), S_OK);
        ::CoTaskMemFree(info.pszTitle);
        ASSERT_EQ(page.Connect(filter), S_OK);
        page.Show();
        RECT units = {0, 0, width, height};
        ASSERT_TRUE(::MapDialogRect(page.Window(), &units));
        EXPECT_EQ(info.size.cx, units.right);
        EXPECT_EQ(info.size.cy, units.bottom);
        page.Leave();
        EXPECT_EQ(page.Page().SetObjects(0, nullptr), S_OK);
    };
    expectSize(NewPage<ParametersPage>(), 567, 229);
    expectSize(NewPage<BrowserPage>(), 344, 223);
    expectSize(NewPage<AboutPage>(), 344, 223);
}

TEST_F(PagesLayoutTest, PagesHaveTheCommonControlsOfTheManifest)
{
    OpenPage page(NewPage<BrowserPage>());
    Show<BrowserPage>(page);

    // This program has no manifest of its own; only the newer buttons answer this.
    SIZE size{};
    EXPECT_TRUE(::SendMessageW(page.Item(IDC_SET), BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&size)));
    HWND const usual = ::CreateWindowExW(0, WC_BUTTONW, L"Usual", WS_CHILD, 0, 0, 10, 10, page.Frame(),
                                         nullptr, g_hInst, nullptr);
    EXPECT_FALSE(::SendMessageW(usual, BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&size)))
        << "and the host's other windows keep theirs";
}

TEST_F(PagesLayoutTest, TheScreenHasTheResolutionThatIsToBeTested)
{
    constexpr UINT kUsualDpi = 96;
    const char* const expected = std::getenv("VX_EXPECTED_DPI"); // set where it is another
    EXPECT_EQ(::GetDpiForSystem(), expected != nullptr ? static_cast<UINT>(std::stoul(expected)) : kUsualDpi);
}

TEST_F(PagesLayoutTest, PagesHaveTheirTitles)
{
    const auto titleOf = [](CUnknown* made) {
        OpenPage page(made);
        PROPPAGEINFO info{};
        EXPECT_EQ(page.Page().GetPageInfo(&info), S_OK);
        const std::wstring title = info.pszTitle;
        ::CoTaskMemFree(info.pszTitle);
        return title;
    };
    EXPECT_EQ(titleOf(NewPage<ParametersPage>()), L"Parameters");
    EXPECT_EQ(titleOf(NewPage<BrowserPage>()), L"Browser");
    EXPECT_EQ(titleOf(NewPage<AboutPage>()), L"About");
}

} // namespace
