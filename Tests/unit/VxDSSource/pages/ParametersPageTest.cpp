#include "VxDSSource/pages/ParametersPage.h"

#include "unit/VxDSSource/pages/PageFixture.h"
#include "unit/VxDSSource/pages/ScriptedSource.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The page with a control interface that stores whatever it is told.
class ParametersPageTest : public PageFixture {
protected:
    void Show()
    {
        m_page.emplace(NewPage<ParametersPage>());
        ASSERT_EQ(m_page->Connect(source), S_OK);
        m_page->Show();
        source.ForgetCalls();
    }
    OpenPage& Page() { return *m_page; }

    /// What Apply wrote of one setting.
    std::vector<std::string> Applied(const std::string& setter)
    {
        Page().Type(IDC_DROP_THRESHOLD, Page().Text(IDC_DROP_THRESHOLD).c_str()); // makes the page dirty
        source.ForgetCalls();
        EXPECT_EQ(Page().Apply(), S_OK);
        return source.TakeCalls(setter);
    }

    ScriptedSource source;

private:
    std::optional<OpenPage> m_page;
};

TEST_F(ParametersPageTest, ReadsTheFilterInOrderWhenItIsConnected)
{
    source.sources = {L"Source0", L"Source1"};
    OpenPage page(NewPage<ParametersPage>());

    ASSERT_EQ(page.Connect(source), S_OK);

    EXPECT_THAT(source.TakeCalls(),
                ElementsAre("GetRole", "GetUnicastPort", "GetMulticastPort", "GetDiagnosticsEnabled",
                            "GetParamChannel", "GetBufferCount", "GetDefaultBufferSize", "GetDropThreshold",
                            "GetWidth", "GetHeight", "GetOutputPixelType", "GetKernelSize", "GetZoomValue",
                            "GetOutputSize", "GetMulticastAddress", "GetDeviceId", "GetSourceCount",
                            "GetSourceName(0)", "GetSourceName(1)", "GetParamSource", "GetDefaultSummary"));
}

TEST_F(ParametersPageTest, ShowsEveryValueAndStaysClean)
{
    source.numbers = {{"Role", 2},
                      {"UnicastPort", 5000},
                      {"MulticastPort", 1042},
                      {"DiagnosticsEnabled", 1},
                      {"ParamChannel", 3},
                      {"BufferCount", 4294967295U},
                      {"DefaultBufferSize", 4147200},
                      {"DropThreshold", 7},
                      {"Width", 1920},
                      {"Height", 1080},
                      {"OutputPixelType", 1},
                      {"KernelSize", 5},
                      {"ZoomValue", 9},
                      {"OutputWidth", 640},
                      {"OutputHeight", 480}};
    source.texts = {{"MulticastAddress", L"239.192.1.1"},
                    {"ParamSource", L"Source1"},
                    {"DefaultSummary", L"Controlling and receiving from cam"}};
    source.sources = {L"Source0", L"Source1"};

    Show();

    EXPECT_TRUE(Page().IsChecked(IDC_ROLE_MULTICAST));
    EXPECT_FALSE(Page().IsChecked(IDC_ROLE_CONTROLLER) || Page().IsChecked(IDC_ROLE_UNICAST));
    EXPECT_EQ(Page().Text(IDC_UNICAST_PORT), L"5000");
    EXPECT_EQ(Page().Text(IDC_MULTICAST_ADDRESS), L"239.192.1.1");
    EXPECT_EQ(Page().Text(IDC_MULTICAST_PORT), L"1042");
    EXPECT_TRUE(Page().IsChecked(IDC_DIAGNOSTICS));
    EXPECT_EQ(Page().Text(IDC_STREAM_CHANNEL), L"3");
    EXPECT_EQ(Page().Text(IDC_BUFFER_COUNT), L"-1") << "32 bits with a sign";
    EXPECT_EQ(Page().Text(IDC_DEFAULT_BUFFER_SIZE), L"4147200");
    EXPECT_EQ(Page().Text(IDC_DROP_THRESHOLD), L"7");
    EXPECT_EQ(Page().Text(IDC_DEVICE_WIDTH), L"1920");
    EXPECT_EQ(Page().Text(IDC_DEVICE_HEIGHT), L"1080");
    EXPECT_THAT(Page().Entries(IDC_OUTPUT_TYPE), ElementsAre(L"RGB", L"YUV"));
    EXPECT_EQ(Page().Selection(IDC_OUTPUT_TYPE), 1);
    EXPECT_THAT(Page().Entries(IDC_KERNEL_SIZE), ElementsAre(L"0", L"3", L"5"));
    EXPECT_EQ(Page().Selection(IDC_KERNEL_SIZE), 2);
    EXPECT_THAT(Page().Entries(IDC_ZOOM),
                ElementsAre(L"0", L"1", L"2", L"3", L"4", L"5", L"6", L"7", L"8", L"9"));
    EXPECT_EQ(Page().Selection(IDC_ZOOM), 9);
    EXPECT_EQ(Page().Text(IDC_OUTPUT_WIDTH), L"640");
    EXPECT_EQ(Page().Text(IDC_OUTPUT_HEIGHT), L"480");
    EXPECT_THAT(Page().Entries(IDC_SOURCE), ElementsAre(L"Source0", L"Source1"));
    EXPECT_EQ(Page().Selection(IDC_SOURCE), 1);
    EXPECT_EQ(Page().Text(IDC_DEFAULT_SUMMARY), L"Controlling and receiving from cam");
    EXPECT_FALSE(Page().IsDirty());
    EXPECT_EQ(Page().site.dirtyCount, 0);
    EXPECT_THAT(source.TakeCalls(), IsEmpty()) << "shown without asking the filter again";
}

TEST_F(ParametersPageTest, WritesTheFilterInOrderConnectsAndReadsAgain)
{
    source.numbers = {{"UnicastPort", 5000}, {"BufferCount", 16}, {"KernelSize", 3}, {"ZoomValue", 2}};
    source.texts = {{"MulticastAddress", L"239.192.1.1"}, {"DeviceId", L"cam"}, {"ParamSource", L"S"}};
    Show();
    Page().Type(IDC_OUTPUT_WIDTH, L"640");
    Page().Type(IDC_OUTPUT_HEIGHT, L"480");

    EXPECT_EQ(Page().Apply(), S_OK);

    auto calls = source.TakeCalls();
    const auto firstRead = std::ranges::find(calls, "GetRole");
    EXPECT_NE(firstRead, calls.end()) << "the page shows what the filter took";
    calls.erase(firstRead, calls.end());
    EXPECT_THAT(calls, ElementsAre("SetRole(0)", "SetUnicastPort(5000)", "SetMulticastPort(0)",
                                   "SetDiagnosticsEnabled(0)", "SetParamChannel(0)", "SetBufferCount(16)",
                                   "SetDefaultBufferSize(0)", "SetDropThreshold(0)", "SetZoomValue(2)",
                                   "SetOutputSize(640, 480)", "SetOutputPixelType(0)", "SetKernelSize(3)",
                                   "SetMulticastAddress(239.192.1.1)", "SetDeviceId(cam)",
                                   "SetParamSource(S)", "Connect"));
    EXPECT_FALSE(Page().IsDirty());
}

TEST_F(ParametersPageTest, ShowsTheWaitCursorWhileItConnects)
{
    Show();
    const HCURSOR before = ::SetCursor(::LoadCursorW(nullptr, IDC_ARROW));
    HCURSOR during = nullptr;
    source.onCall = [&](const std::string& call) {
        if (call == "Connect")
            during = ::GetCursor();
    };
    Page().Type(IDC_BUFFER_COUNT, L"8");

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(during, ::LoadCursorW(nullptr, IDC_WAIT));
    EXPECT_EQ(::GetCursor(), ::LoadCursorW(nullptr, IDC_ARROW));
    ::SetCursor(before);
}

TEST_F(ParametersPageTest, ShowsWhatTheFilterKeptWhenItsSettersRefuse)
{
    source.numbers["BufferCount"] = 16;
    Show();
    source.setting = E_FAIL;
    Page().Type(IDC_BUFFER_COUNT, L"99");

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(Page().Text(IDC_BUFFER_COUNT), L"16");
}

TEST_F(ParametersPageTest, RoleOutOfRangeShowsTheControllerAndAppliesRoleZero)
{
    source.numbers["Role"] = 5;
    Show();

    EXPECT_TRUE(Page().IsChecked(IDC_ROLE_CONTROLLER));
    EXPECT_THAT(Applied("SetRole"), ElementsAre("SetRole(0)"));
}

TEST_F(ParametersPageTest, ControllerHasNoFieldsOfReceivers)
{
    Show();
    Page().Click(IDC_ROLE_MULTICAST);

    Page().Click(IDC_ROLE_CONTROLLER);

    for (const int field : {IDC_UNICAST_PORT, IDC_MULTICAST_ADDRESS, IDC_MULTICAST_PORT, IDC_STREAM_CHANNEL})
        EXPECT_FALSE(Page().IsEnabled(field)) << field;
    EXPECT_THAT(Applied("SetRole"), ElementsAre("SetRole(0)"));
}

TEST_F(ParametersPageTest, UnicastReceiverHasItsPortAndTheStreamChannel)
{
    Show();

    Page().Click(IDC_ROLE_UNICAST);

    EXPECT_TRUE(Page().IsEnabled(IDC_UNICAST_PORT));
    EXPECT_TRUE(Page().IsEnabled(IDC_STREAM_CHANNEL));
    EXPECT_FALSE(Page().IsEnabled(IDC_MULTICAST_ADDRESS));
    EXPECT_FALSE(Page().IsEnabled(IDC_MULTICAST_PORT));
    EXPECT_TRUE(Page().IsDirty());
    EXPECT_THAT(Applied("SetRole"), ElementsAre("SetRole(1)"));
}

TEST_F(ParametersPageTest, MulticastReceiverHasAddressPortAndTheStreamChannel)
{
    Show();

    Page().Click(IDC_ROLE_MULTICAST);

    EXPECT_FALSE(Page().IsEnabled(IDC_UNICAST_PORT));
    EXPECT_TRUE(Page().IsEnabled(IDC_STREAM_CHANNEL));
    EXPECT_TRUE(Page().IsEnabled(IDC_MULTICAST_ADDRESS));
    EXPECT_TRUE(Page().IsEnabled(IDC_MULTICAST_PORT));
    EXPECT_THAT(Applied("SetRole"), ElementsAre("SetRole(2)"));
}

TEST_F(ParametersPageTest, ChoosingARoleLeavesExactlyOneButtonChecked)
{
    Show();
    const int roles[] = {IDC_ROLE_CONTROLLER, IDC_ROLE_UNICAST, IDC_ROLE_MULTICAST};
    for (const int chosen : {IDC_ROLE_MULTICAST, IDC_ROLE_CONTROLLER, IDC_ROLE_UNICAST}) {
        Page().Click(chosen);

        for (const int role : roles)
            EXPECT_EQ(Page().IsChecked(role), role == chosen);
    }
}

TEST_F(ParametersPageTest, DeviceSizeCanNeverBeEdited)
{
    Show();
    for (const int role : {IDC_ROLE_UNICAST, IDC_ROLE_MULTICAST, IDC_ROLE_CONTROLLER}) {
        Page().Click(role);

        EXPECT_FALSE(Page().IsEnabled(IDC_DEVICE_WIDTH));
        EXPECT_FALSE(Page().IsEnabled(IDC_DEVICE_HEIGHT));
    }
    EXPECT_THAT(Applied("SetWidth"), IsEmpty());
    EXPECT_THAT(Applied("SetHeight"), IsEmpty());
}

TEST_F(ParametersPageTest, SourceListIsDisabledWhileItIsEmptyInEveryRole)
{
    Show();
    EXPECT_FALSE(Page().IsEnabled(IDC_SOURCE));
    for (const int role : {IDC_ROLE_UNICAST, IDC_ROLE_MULTICAST, IDC_ROLE_CONTROLLER}) {
        Page().Click(role);
        EXPECT_FALSE(Page().IsEnabled(IDC_SOURCE));
    }
}

TEST_F(ParametersPageTest, SourceListIsEnabledWhenItHasEntriesInEveryRole)
{
    source.sources = {L"Source0"};
    Show();
    EXPECT_TRUE(Page().IsEnabled(IDC_SOURCE));
    for (const int role : {IDC_ROLE_UNICAST, IDC_ROLE_MULTICAST, IDC_ROLE_CONTROLLER}) {
        Page().Click(role);
        EXPECT_TRUE(Page().IsEnabled(IDC_SOURCE));
    }
}

TEST_F(ParametersPageTest, SourceIsSelectedByItsExactNameOnly)
{
    source.sources = {L"source1", L"Source10", L"Source1"};
    source.texts["ParamSource"] = L"Source1";
    Show();
    EXPECT_EQ(Page().Selection(IDC_SOURCE), 2);
    Page().Leave();

    source.texts["ParamSource"] = L"Source";
    Show();

    EXPECT_EQ(Page().Selection(IDC_SOURCE), -1);
    EXPECT_THAT(Applied("SetParamSource"), ElementsAre("SetParamSource(Source)"));
}

TEST_F(ParametersPageTest, SelectedSourceIsApplied)
{
    source.sources = {L"Source0", L"Source1"};
    Show();

    Page().Select(IDC_SOURCE, 1);

    EXPECT_THAT(Applied("SetParamSource"), ElementsAre("SetParamSource(Source1)"));
}

TEST_F(ParametersPageTest, KernelSizeSevenShowsNothingAndStays)
{
    source.numbers["KernelSize"] = 7;
    Show();

    EXPECT_EQ(Page().Selection(IDC_KERNEL_SIZE), -1);
    EXPECT_THAT(Applied("SetKernelSize"), ElementsAre("SetKernelSize(7)"));
}

TEST_F(ParametersPageTest, KernelSizeFourShowsThreeAndAppliesThree)
{
    source.numbers["KernelSize"] = 4;
    Show();

    EXPECT_EQ(Page().Selection(IDC_KERNEL_SIZE), 1);
    EXPECT_THAT(Applied("SetKernelSize"), ElementsAre("SetKernelSize(3)"));
}

TEST_F(ParametersPageTest, OutputPixelTypeTwoShowsNothingAndStays)
{
    source.numbers["OutputPixelType"] = 2;
    Show();

    EXPECT_EQ(Page().Selection(IDC_OUTPUT_TYPE), -1);
    EXPECT_THAT(Applied("SetOutputPixelType"), ElementsAre("SetOutputPixelType(2)"));
}

TEST_F(ParametersPageTest, ZoomOutsideTheListShowsNothingAndStays)
{
    for (const INT zoom : {10, -3}) {
        source.numbers["ZoomValue"] = static_cast<UINT>(zoom);
        Show();

        EXPECT_EQ(Page().Selection(IDC_ZOOM), -1);
        EXPECT_THAT(Applied("SetZoomValue"), ElementsAre("SetZoomValue(" + std::to_string(zoom) + ")"));
    }
}

TEST_F(ParametersPageTest, ChosenListEntriesAreApplied)
{
    Show();
    Page().Select(IDC_OUTPUT_TYPE, 1);
    Page().Select(IDC_KERNEL_SIZE, 2);
    Page().Select(IDC_ZOOM, 4);

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(source.numbers["OutputPixelType"], 1u);
    EXPECT_EQ(source.numbers["KernelSize"], 5u);
    EXPECT_EQ(source.numbers["ZoomValue"], 4u);
}

TEST_F(ParametersPageTest, NumbersAreReadAsAStreamReadsThem)
{
    source.numbers = {{"UnicastPort", 5000}, {"BufferCount", 16}};
    Show();
    Page().Type(IDC_UNICAST_PORT, L"");
    Page().Type(IDC_BUFFER_COUNT, L"many");
    Page().Type(IDC_DEFAULT_BUFFER_SIZE, L"12x34");
    Page().Type(IDC_DROP_THRESHOLD, L"-5");
    Page().Type(IDC_STREAM_CHANNEL, L"99999999999");

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(source.numbers["UnicastPort"], 5000u) << "an empty text leaves the value";
    EXPECT_EQ(source.numbers["BufferCount"], 0u);
    EXPECT_EQ(source.numbers["DefaultBufferSize"], 12u);
    EXPECT_EQ(static_cast<INT>(source.numbers["DropThreshold"]), -5);
    EXPECT_EQ(source.numbers["ParamChannel"], 0x7FFFFFFFu) << "the nearest that 32 bits can hold";
    EXPECT_EQ(Page().Text(IDC_BUFFER_COUNT), L"0");
}

TEST_F(ParametersPageTest, LongTextsAreReadToTheirLimit)
{
    Show();
    Page().Type(IDC_MULTICAST_ADDRESS, std::wstring(300, L'1').c_str());

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(source.texts["MulticastAddress"], std::wstring(256, L'1'));
}

TEST_F(ParametersPageTest, DiagnosticsFollowTheCheckBox)
{
    Show();

    Page().Click(IDC_DIAGNOSTICS);

    EXPECT_TRUE(Page().IsDirty());
    EXPECT_THAT(Applied("SetDiagnosticsEnabled"), ElementsAre("SetDiagnosticsEnabled(1)"));
}

TEST_F(ParametersPageTest, EveryEditMakesThePageDirty)
{
    Show();
    for (const int field :
         {IDC_UNICAST_PORT, IDC_MULTICAST_ADDRESS, IDC_MULTICAST_PORT, IDC_STREAM_CHANNEL, IDC_BUFFER_COUNT,
          IDC_DEFAULT_BUFFER_SIZE, IDC_DROP_THRESHOLD, IDC_OUTPUT_WIDTH, IDC_OUTPUT_HEIGHT}) {
        EXPECT_EQ(Page().Apply(), S_OK);
        EXPECT_FALSE(Page().IsDirty());
        const int before = Page().site.dirtyCount;

        Page().Type(field, L"12");

        EXPECT_TRUE(Page().IsDirty()) << field;
        EXPECT_GT(Page().site.dirtyCount, before) << field;
    }
}

TEST_F(ParametersPageTest, NothingIsWrittenBeforeApply)
{
    Show();
    Page().Click(IDC_ROLE_UNICAST);
    Page().Type(IDC_BUFFER_COUNT, L"99");

    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(ParametersPageTest, CommandsAreIgnoredBeforeThePageIsActive)
{
    Show();
    Page().Leave();
    auto& page = static_cast<CBasePropertyPage&>(Page().Page());

    EXPECT_EQ(page.OnReceiveMessage(nullptr, WM_COMMAND, MAKEWPARAM(IDC_USE_CURRENT, BN_CLICKED), 0), TRUE);

    EXPECT_FALSE(Page().IsDirty());
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(ParametersPageTest, UseCurrentSavesTheDefaultAndMarksThePageDirty)
{
    Show();
    source.texts["DefaultSummary"] = L"Receiving from cam on port 5000";

    Page().Click(IDC_USE_CURRENT);

    EXPECT_TRUE(Page().IsDirty());
    EXPECT_GE(Page().site.dirtyCount, 1);
    EXPECT_THAT(source.TakeCalls("Save"), ElementsAre("SaveDefault"));
    EXPECT_EQ(Page().Text(IDC_DEFAULT_SUMMARY), L"Receiving from cam on port 5000");
}

TEST_F(ParametersPageTest, ClearClearsTheDefault)
{
    source.texts["DefaultSummary"] = L"Receiving from cam on port 5000";
    Show();
    source.texts["DefaultSummary"].clear();

    Page().Click(IDC_CLEAR);

    EXPECT_TRUE(Page().IsDirty());
    EXPECT_THAT(source.TakeCalls("Clear"), ElementsAre("ClearDefault"));
    EXPECT_EQ(Page().Text(IDC_DEFAULT_SUMMARY), L"");
}

TEST_F(ParametersPageTest, LeavingAndReturningKeepsWhatWasNotApplied)
{
    source.numbers = {{"BufferCount", 16}};
    Show();
    Page().Type(IDC_BUFFER_COUNT, L"99");
    Page().Type(IDC_MULTICAST_ADDRESS, L"239.1.2.3");
    Page().Click(IDC_ROLE_UNICAST);
    Page().Select(IDC_ZOOM, 6);
    Page().Leave();

    Page().Show();

    EXPECT_EQ(Page().Text(IDC_BUFFER_COUNT), L"99");
    EXPECT_EQ(Page().Text(IDC_MULTICAST_ADDRESS), L"239.1.2.3");
    EXPECT_TRUE(Page().IsChecked(IDC_ROLE_UNICAST));
    EXPECT_EQ(Page().Selection(IDC_ZOOM), 6);
    EXPECT_TRUE(Page().IsEnabled(IDC_UNICAST_PORT));
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(ParametersPageTest, AppliesWhatWasReadWhenThePageWasLeft)
{
    source.texts["MulticastAddress"] = L"239.192.1.1";
    Show();
    Page().Type(IDC_BUFFER_COUNT, L"99");
    Page().Click(IDC_ROLE_MULTICAST);
    Page().Leave();

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(source.numbers["BufferCount"], 99u);
    EXPECT_EQ(source.numbers["Role"], 2u);
    EXPECT_EQ(source.texts["MulticastAddress"], L"239.192.1.1");
}

TEST_F(ParametersPageTest, WithoutTheFilterThereIsNothingToApplyTo)
{
    Show();
    auto& page = static_cast<CBasePropertyPage&>(Page().Page());
    EXPECT_EQ(page.OnDisconnect(), S_OK);
    EXPECT_EQ(source.References(), 0);

    EXPECT_EQ(page.OnApplyChanges(), E_POINTER);
    EXPECT_EQ(page.OnDisconnect(), S_OK);
}

/// Says yes to every interface and gives none.
class EmptyPromise final : public TestObject<IUnknown> {
public:
    STDMETHODIMP QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return S_OK;
    }
};

TEST_F(ParametersPageTest, RefusesWhatIsNotOurFilter)
{
    TestObject<IUnknown> other;
    EmptyPromise promise;
    OpenPage page(NewPage<ParametersPage>());

    EXPECT_EQ(static_cast<CBasePropertyPage&>(page.Page()).OnConnect(nullptr), E_POINTER);
    EXPECT_EQ(page.Connect(other), E_NOINTERFACE);
    EXPECT_EQ(page.Connect(promise), E_FAIL);
}

TEST_F(ParametersPageTest, HoldsTheFilterFromConnectToDisconnect)
{
    {
        OpenPage page(NewPage<ParametersPage>());
        ASSERT_EQ(page.Connect(source), S_OK);
        ASSERT_EQ(page.Connect(source), S_OK) << "twice without a disconnect";
        EXPECT_EQ(source.References(), 1);
    }
    EXPECT_EQ(source.References(), 0);
}

TEST_F(ParametersPageTest, EscapeInTheSummaryDoesNotEndThePage)
{
    Show();
    const HWND summary = Page().Item(IDC_DEFAULT_SUMMARY);
    ::SendMessageW(summary, WM_KEYDOWN, VK_ESCAPE, 0);
    HandleMessages();

    EXPECT_TRUE(::IsWindow(Page().Window()));
}

} // namespace
