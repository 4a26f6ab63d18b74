#include "system/RoadTest.h"

#include "VxDSSource/pages/ResourceIds.h"

#include "support/screen/PropertyFrame.h"

#include "vxgrab/ComText.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAreArray;
using vxgrab::ComPtr;
using vxgrab::ComText;
using Tab = PropertyFrame::Tab;

constexpr wchar_t kKey[] = L"SOFTWARE\\Vantrel Technologies Inc\\VxDSSource";

/// The filter's pages in the system's frame, with a simulated camera. Works on the registry of the Wine
/// prefix in which it runs, so it has one of its own (run-in-own-prefix).
class PropertyPagesTest : public RoadTest {
protected:
    ~PropertyPagesTest() override { ::RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

    PropertyFrame& Open(const ComPtr<IBaseFilter>& filter)
    {
        m_control = ControlOf(filter);
        m_frame.emplace([this, filter](HANDLE stop) { return ShowPages(m_module, filter, stop); });
        return *m_frame;
    }
    PropertyFrame::Duration Close()
    {
        m_control.Reset();
        const auto duration = m_frame->Close();
        m_frame.reset();
        return duration;
    }

    static HWND Item(HWND page, int id)
    {
        HWND const item = ::GetDlgItem(page, id);
        EXPECT_NE(item, nullptr) << id;
        return item;
    }
    static void Click(HWND page, int id)
    {
        ASSERT_TRUE(::IsWindowEnabled(Item(page, id))) << id;
        ::SendMessageW(Item(page, id), BM_CLICK, 0, 0);
    }
    static void Type(HWND page, int id, const wchar_t* text)
    {
        ::SendMessageW(Item(page, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    }
    static std::wstring SavedDefault()
    {
        std::array<wchar_t, 2048> text{};
        DWORD bytes = sizeof(text);
        const LSTATUS status =
            ::RegGetValueW(HKEY_CURRENT_USER, kKey, L"Default", RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
        return status == ERROR_SUCCESS ? text.data() : L"(none)";
    }
    std::string FeatureText(const char* name)
    {
        ComText value;
        EXPECT_HRESULT_SUCCEEDED(m_control->GetParameterValue(ComText(name).Get(), value.Put()));
        return value.Utf8();
    }

    /// What the selected set has, as the tree should show it, without values.
    std::vector<std::wstring> ExpectedLeaves()
    {
        std::vector<std::wstring> leaves;
        UINT count = 0;
        EXPECT_HRESULT_SUCCEEDED(m_control->GetParameterCount(&count));
        for (UINT i = 0; i < count; ++i) {
            ComText name;
            ComText category;
            UINT visibility = 0;
            EXPECT_HRESULT_SUCCEEDED(m_control->GetParameterName(i, name.Put()));
            EXPECT_HRESULT_SUCCEEDED(m_control->GetParameterCategory(name.Get(), category.Put()));
            EXPECT_HRESULT_SUCCEEDED(m_control->GetParameterVisibility(name.Get(), &visibility));
            std::wstring path = category.Get();
            constexpr std::wstring_view kRoot = L"root";
            if (path == kRoot)
                path.clear();
            else if (path.starts_with(L"root\\"))
                path = path.substr(kRoot.size() + 1) + L"\\";
            if (visibility < 3)
                leaves.push_back(path + name.Get());
        }
        return leaves;
    }

    static std::vector<std::wstring> WithoutValues(std::vector<std::wstring> leaves)
    {
        for (std::wstring& leaf : leaves)
            leaf.resize(std::min(leaf.size(), leaf.find(L": ")));
        return leaves;
    }

    ComPtr<IVxDSSource> m_control;
    std::optional<PropertyFrame> m_frame;
};

TEST_F(PropertyPagesTest, FrameShowsThreePagesAndNoneIsDirty)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));

    EXPECT_THAT(frame.Titles(), ElementsAre(L"Parameters", L"Browser", L"About"));
    for (const Tab tab : {Tab::Parameters, Tab::Browser, Tab::About})
        EXPECT_FALSE(frame.IsDirty(frame.GoTo(tab)));
    HWND const about = frame.GoTo(Tab::About);
    EXPECT_THAT(TextOfControl(Item(about, IDC_VERSION)), testing::StartsWith(L"Vexa SDK Version "));
    frame.Save(frame.Window(), "frame-about");
    frame.Save(about, "page-about");

    Close();

    EXPECT_TRUE(m_module.IsUnused()) << "the frame's pages and their threads are gone";
}

TEST_F(PropertyPagesTest, FrameOpensAndClosesWithoutACamera)
{
    PropertyFrame& frame = Open(m_module.CreateFilter());
    HWND const parameters = frame.GoTo(Tab::Parameters);
    EXPECT_THAT(EntriesOf(Item(parameters, IDC_SOURCE)), IsEmpty());
    frame.Save(frame.Window(), "frame-parameters-no-camera");
    HWND const browser = frame.GoTo(Tab::Browser);
    EXPECT_THAT(TreeReader(Item(browser, IDC_FEATURES)).Leaves(), IsEmpty());
    frame.GoTo(Tab::About);

    EXPECT_LT(Close(), kStopLimit);
}

TEST_F(PropertyPagesTest, UserChoosesACameraAppliesAndSavesTheDefault)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(m_module.CreateFilter());
    HWND const page = frame.GoTo(Tab::Parameters);
    const std::vector<std::wstring> cameras = EntriesOf(Item(page, IDC_DEVICE));
    ASSERT_FALSE(cameras.empty()) << "the camera is not found";
    EXPECT_THAT(cameras[0], testing::StartsWith(L"SimulatedCamera ["));
    EXPECT_FALSE(camera.ControlOwner());

    ChooseEntry(Item(page, IDC_DEVICE), 0);
    Type(page, IDC_BUFFER_COUNT, L"9");
    EXPECT_TRUE(frame.IsDirty(page));
    EXPECT_EQ(frame.Apply(page), S_OK);

    EXPECT_FALSE(frame.IsDirty(page));
    EXPECT_TRUE(camera.ControlOwner()) << "applying connects";
    UINT count = 0;
    EXPECT_EQ(m_control->GetBufferCount(&count), S_OK);
    EXPECT_EQ(count, 9u);
    EXPECT_NE(::SendMessageW(Item(page, IDC_DEVICE), CB_GETCURSEL, 0, 0), CB_ERR);
    frame.Save(frame.Window(), "frame-parameters");

    Type(page, IDC_BUFFER_COUNT, L"77"); // not applied
    Click(page, IDC_USE_CURRENT);
    EXPECT_EQ(TextOfControl(Item(page, IDC_BUFFER_COUNT)), L"9");
    EXPECT_THAT(TextOfControl(Item(page, IDC_DEFAULT_SUMMARY)),
                testing::StartsWith(L"Controlling and receiving from "));
    EXPECT_TRUE(frame.IsDirty(page));
    EXPECT_NE(SavedDefault(), L"(none)");
    frame.Save(frame.Window(), "frame-parameters-saved");
    frame.Save(page, "page-parameters");

    Click(page, IDC_CLEAR);
    EXPECT_EQ(TextOfControl(Item(page, IDC_DEFAULT_SUMMARY)), L"");
    EXPECT_EQ(SavedDefault(), L"(none)");
}

TEST_F(PropertyPagesTest, NextFilterBeginsWithTheSavedDefault)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Parameters);
    Type(page, IDC_BUFFER_COUNT, L"11");
    EXPECT_EQ(frame.Apply(page), S_OK);
    Click(page, IDC_USE_CURRENT);
    Close();
    EXPECT_FALSE(camera.ControlOwner());

    const auto filter = m_module.CreateFilter();

    EXPECT_TRUE(camera.ControlOwner()) << "connected while it is created";
    UINT count = 0;
    EXPECT_EQ(ControlOf(filter)->GetBufferCount(&count), S_OK);
    EXPECT_EQ(count, 11u);
}

TEST_F(PropertyPagesTest, BrowserShowsEveryVisibleFeatureOfEverySet)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    const TreeReader tree(Item(page, IDC_FEATURES));
    const char* const names[] = {"frame-browser-communication", "frame-browser", "frame-browser-stream"};
    for (int set = 0; set < 3; ++set) {
        ChooseEntry(Item(page, IDC_FEATURE_SET), set);

        const auto expected = ExpectedLeaves();
        EXPECT_GT(expected.size(), 5u);
        EXPECT_THAT(WithoutValues(tree.Leaves()), UnorderedElementsAreArray(expected));
        EXPECT_TRUE(WaitUntil([&] {
            return std::ranges::all_of(tree.Leaves(), [](const std::wstring& leaf) {
                return leaf.find(L": ") != std::wstring::npos;
            });
        })) << "each leaf gets its value";
        frame.Save(frame.Window(), names[set]);
        if (set == 1)
            frame.Save(page, "page-browser");
    }
}

TEST_F(PropertyPagesTest, LeavesShowWhatTheCameraHasAndFollowIt)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    ChooseEntry(Item(page, IDC_FEATURE_SET), 1);
    const TreeReader tree(Item(page, IDC_FEATURES));
    EXPECT_TRUE(WaitUntil([&] { return tree.Shows(L"Width", L"320"); }));
    EXPECT_TRUE(WaitUntil([&] { return tree.Shows(L"AcquisitionStart", L"{Command}"); }));
    EXPECT_TRUE(WaitUntil([&] { return tree.Shows(L"PixelFormat", L"Mono8"); }));

    ComText reason;
    EXPECT_EQ(m_control->SetParameterValue(ComText("Width").Get(), ComText("256").Get(), reason.Put()), S_OK);

    EXPECT_TRUE(WaitUntil([&] { return tree.Shows(L"Width", L"256"); }));
}

TEST_F(PropertyPagesTest, UserSetsAValueAndChoosesAnEntry)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    ChooseEntry(Item(page, IDC_FEATURE_SET), 1);
    const TreeReader tree(Item(page, IDC_FEATURES));

    tree.Select(L"Width");
    EXPECT_EQ(TextOfControl(Item(page, IDC_VALUE)), L"320");
    Type(page, IDC_VALUE, L"160");
    Click(page, IDC_SET);
    EXPECT_EQ(FeatureText("Width"), "160");
    EXPECT_TRUE(WaitUntil([&] { return tree.Shows(L"Width", L"160"); }));

    tree.Select(L"PixelFormat");
    ::SendMessageW(Item(page, IDC_VALUE), CB_SHOWDROPDOWN, TRUE, 0);
    const auto entries = EntriesOf(Item(page, IDC_VALUE));
    EXPECT_TRUE(std::ranges::is_sorted(entries, [](const std::wstring& a, const std::wstring& b) {
        return ::lstrcmpiW(a.c_str(), b.c_str()) < 0; // as people sort
    }));
    EXPECT_THAT(entries, Contains(L"BGR8"));
    ::SendMessageW(Item(page, IDC_VALUE), CB_SHOWDROPDOWN, FALSE, 0);
    Type(page, IDC_VALUE, L"BGR8");
    Click(page, IDC_SET);
    EXPECT_EQ(FeatureText("PixelFormat"), "BGR8");
    EXPECT_FALSE(frame.IsDirty(page));
}

TEST_F(PropertyPagesTest, UserExecutesCommands)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    ChooseEntry(Item(page, IDC_FEATURE_SET), 1);
    const TreeReader tree(Item(page, IDC_FEATURES));

    tree.Select(L"AcquisitionStart");
    EXPECT_FALSE(::IsWindowEnabled(Item(page, IDC_SET)));
    Click(page, IDC_EXECUTE);
    EXPECT_TRUE(camera.IsAcquiring());

    tree.Select(L"AcquisitionStop");
    Click(page, IDC_EXECUTE);
    EXPECT_FALSE(camera.IsAcquiring());
}

TEST_F(PropertyPagesTest, RefusedValueIsToldInAMessageBox)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    ChooseEntry(Item(page, IDC_FEATURE_SET), 1);
    TreeReader(Item(page, IDC_FEATURES)).Select(L"Width");
    Type(page, IDC_VALUE, L"wide");

    ::PostMessageW(Item(page, IDC_SET), BM_CLICK, 0, 0); // posted: it returns when the box is closed
    HWND const box = frame.WaitForMessageBox();

    ASSERT_NE(box, nullptr);
    const std::wstring text = TextOfControl(::GetDlgItem(box, 0xFFFF));
    EXPECT_THAT(text, testing::StartsWith(L"Operation failed."));
    EXPECT_GT(text.size(), std::wstring(L"Operation failed.").size()) << "the camera library gives a reason";
    EXPECT_EQ(TextOfControl(box), L"VxDSSource");
    frame.Save(box, "frame-browser-refused");
    ::PostMessageW(box, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(WaitUntil([&] { return !::IsWindow(box); }));
    EXPECT_EQ(FeatureText("Width"), "320");
}

TEST_F(PropertyPagesTest, SwitchingSetsFiftyTimesWhileStreamingShowsTheLastOne)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    FrameCatcher catcher;
    const auto filter = FilterFor(camera);
    GrabberGraph graph(filter, MEDIASUBTYPE_RGB24, catcher);
    ASSERT_TRUE(graph.IsBuilt());
    ASSERT_HRESULT_SUCCEEDED(graph.Run());
    ASSERT_TRUE(catcher.WaitForPicture(kPatience));
    PropertyFrame& frame = Open(filter);
    HWND const page = frame.GoTo(Tab::Browser);
    const TreeReader tree(Item(page, IDC_FEATURES));

    for (int i = 1; i <= 50; ++i)
        ChooseEntry(Item(page, IDC_FEATURE_SET), i % 3);

    EXPECT_THAT(WithoutValues(tree.Leaves()), UnorderedElementsAreArray(ExpectedLeaves()));
    EXPECT_TRUE(WaitUntil([&] {
        HTREEITEM const rate = tree.Find(L"AcquisitionRate");
        return rate != nullptr && tree.TextOf(rate).starts_with(L"AcquisitionRate: ");
    })) << "the stream's statistics";
    catcher.Forget();
    EXPECT_TRUE(catcher.WaitForPicture(kPatience)) << "the stream goes on";
    EXPECT_LT(Close(), kStopLimit);
    EXPECT_LT(graph.TimedStop(), kStopLimit);
}

TEST_F(PropertyPagesTest, ClosingDuringASlowCameraCallTakesThatCallAtMost)
{
    constexpr std::chrono::milliseconds kSlow{40}; // connecting asks many times
    VxSimulatedCamera camera;
    VxSimulatorOptions options = SmallCamera("Mono8");
    options.faults.answerDelay = kSlow;
    Start(camera, options);
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    ChooseEntry(Item(page, IDC_FEATURE_SET), 1);
    ::Sleep(300); // into the middle of a pass, which takes many answers

    EXPECT_LT(Close(), kStopLimit) << "one feature and the disconnect, not the whole pass";
    EXPECT_TRUE(m_module.IsUnused());
}

TEST_F(PropertyPagesTest, ClosingWhileTheCameraIsGoneNeverHangs)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    ChooseEntry(Item(page, IDC_FEATURE_SET), 1);
    camera.Vanish();
    ::Sleep(1200); // the next pass is under way and asks in vain

    EXPECT_LT(Close(), std::chrono::seconds(8)) << "a command's time-outs, and those of the disconnect";
    EXPECT_TRUE(m_module.IsUnused());
}

TEST_F(PropertyPagesTest, ProgramsStopClosesTheFrameAndTheMessageBoxOverIt)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    PropertyFrame& frame = Open(FilterFor(camera));
    HWND const page = frame.GoTo(Tab::Browser);
    ChooseEntry(Item(page, IDC_FEATURE_SET), 1);
    TreeReader(Item(page, IDC_FEATURES)).Select(L"Width");
    Type(page, IDC_VALUE, L"wide");
    ::PostMessageW(Item(page, IDC_SET), BM_CLICK, 0, 0);
    ASSERT_NE(frame.WaitForMessageBox(), nullptr);

    EXPECT_LT(frame.Stop(), kPatience);
}

TEST_F(PropertyPagesTest, TabKeyTravelsThroughThePage)
{
    PropertyFrame& frame = Open(m_module.CreateFilter());
    HWND const page = frame.GoTo(Tab::Parameters);
    frame.Run([&] { ::SetFocus(Item(page, IDC_BUFFER_COUNT)); });
    const auto focus = [&] {
        HWND window = nullptr;
        frame.Run([&] { window = ::GetFocus(); });
        return window;
    };

    for (const int next : {IDC_DEFAULT_BUFFER_SIZE, IDC_DROP_THRESHOLD, IDC_DIAGNOSTICS, IDC_OUTPUT_TYPE}) {
        ::PostMessageW(focus(), WM_KEYDOWN, VK_TAB, 0);
        EXPECT_TRUE(WaitUntil([&] { return focus() == Item(page, next); }, std::chrono::seconds(5))) << next;
    }
    frame.Save(frame.Window(), "frame-parameters-tab");
}

TEST_F(PropertyPagesTest, OpeningAndClosingLeavesNothingBehind)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    ExpectNothingIsLeftBy([&] {
        PropertyFrame& frame = Open(FilterFor(camera));
        frame.GoTo(Tab::Browser);
        frame.GoTo(Tab::About);
        Close();
    });
}

} // namespace
