// The source settings page with the real filter: cameras that are found, and the default in the registry.

#include "VxDSSource/filter/DefaultSettings.h"
#include "VxDSSource/pages/ParametersPage.h"

#include "unit/VxDSSource/pages/PageFixture.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ParametersPageDevicesTest : public PageFixture {
protected:
    ~ParametersPageDevicesTest() override { m_page.reset(); } // before the filter

    void Show()
    {
        m_page.emplace(NewPage<ParametersPage>());
        ASSERT_EQ(m_page->Connect(Control()), S_OK);
        m_page->Show();
    }
    OpenPage& Page() { return *m_page; }

    std::wstring DeviceId()
    {
        TestText id;
        EXPECT_EQ(Control().GetDeviceId(id.Put()), S_OK);
        return id.Get();
    }
    UINT BufferCount()
    {
        UINT count = 0;
        EXPECT_EQ(Control().GetBufferCount(&count), S_OK);
        return count;
    }

private:
    std::optional<OpenPage> m_page;
};

TEST_F(ParametersPageDevicesTest, SearchesForAQuarterOfASecondEachTimeTheValuesAreShown)
{
    Show();

    EXPECT_THAT(Done(), ElementsAre("system.SetDetectionTimeout(250)", "system.Find"));
}

TEST_F(ParametersPageDevicesTest, ListsModelAndConnectionIdAndNothingElse)
{
    TheCamera().found = {{"192.168.0.12", "Cam-200", 0, true}};

    Show();

    EXPECT_THAT(Page().Entries(IDC_DEVICE), ElementsAre(L"Cam-200 [192.168.0.12]"));
}

TEST_F(ParametersPageDevicesTest, ListsOnlyUsableCamerasOfTheTwoKnownKinds)
{
    TheCamera().found = {{"1", "GigE", 0, true},   {"2", "Wrong subnet", 0, false},
                         {"3", "Kind 1", 1, true}, {"4", "Kind 2", 2, true},
                         {"5", "USB", 3, true},    {"6", "USB, wrong", 3, false}};

    Show();

    EXPECT_THAT(Page().Entries(IDC_DEVICE), ElementsAre(L"GigE [1]", L"USB [5]"));
}

TEST_F(ParametersPageDevicesTest, SelectsTheCameraOfTheSettings)
{
    TheCamera().found = {{"cam", "A", 0, true}, {"cam2", "B", 0, true}, {"CAM2", "C", 0, true}};
    EXPECT_EQ(Control().SetDeviceId(TestText(L"cam2")), S_OK);

    Show();

    EXPECT_EQ(Page().Selection(IDC_DEVICE), 1);
    EXPECT_FALSE(Page().IsDirty());
}

TEST_F(ParametersPageDevicesTest, AppliesTheChosenCameraAndConnectsToIt)
{
    TheCamera().found = {{"cam1", "A", 0, true}, {"cam2", "B", 0, true}};
    Show();
    Page().Select(IDC_DEVICE, 1);
    Done();

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(DeviceId(), L"cam2");
    const Lines done = Done();
    EXPECT_TRUE(std::ranges::any_of(done, [](const std::string& call) {
        return call.find("cam2") != std::string::npos;
    })) << testing::PrintToString(done);
    EXPECT_TRUE(TheCamera().isConnected);
    EXPECT_EQ(Page().Selection(IDC_DEVICE), 1);
}

TEST_F(ParametersPageDevicesTest, KeepsTheCameraThatDoesNotAnswer)
{
    TheCamera().kind = DeviceKind::None;
    EXPECT_EQ(Control().SetDeviceId(TestText(L"absent")), S_OK);
    TheCamera().found = {{"cam1", "A", 0, true}};
    Show();
    EXPECT_EQ(Page().Selection(IDC_DEVICE), -1);
    Page().Type(IDC_BUFFER_COUNT, L"8");

    EXPECT_EQ(Page().Apply(), S_OK);

    EXPECT_EQ(DeviceId(), L"absent");
}

TEST_F(ParametersPageDevicesTest, ForgetsNothingWhenTheListIsFilledAgain)
{
    TheCamera().found = {{"cam1", "A", 0, true}, {"cam2", "B", 0, true}};
    Show();
    Page().Select(IDC_DEVICE, 1);
    Page().Leave();
    TheCamera().found = {{"cam0", "New", 0, true}, {"cam1", "A", 0, true}, {"cam2", "B", 0, true}};

    Page().Show();

    EXPECT_EQ(Page().Selection(IDC_DEVICE), 2) << "chosen and not applied";
    EXPECT_EQ(Page().Apply(), S_OK);
    EXPECT_EQ(DeviceId(), L"cam2");
}

TEST_F(ParametersPageDevicesTest, OffersTheSourcesOfTheConnectedCamera)
{
    TheCamera().device->AddEnum("SourceSelector", {"Source0", "Source1"});
    Connect();

    Show();

    EXPECT_THAT(Page().Entries(IDC_SOURCE), ElementsAre(L"Source0", L"Source1"));
    EXPECT_TRUE(Page().IsEnabled(IDC_SOURCE));
    EXPECT_EQ(Page().Selection(IDC_SOURCE), 0) << "connected without a wish, the filter has the camera's own";
}

TEST_F(ParametersPageDevicesTest, StoredKernelSizeSevenSurvivesApply)
{
    ASSERT_TRUE(vxds::DefaultSettings().Write(L"double;text:kernelsize=7;text:outputpixeltype=2", L"kept"));
    Show();
    EXPECT_EQ(Page().Selection(IDC_KERNEL_SIZE), -1);
    EXPECT_EQ(Page().Selection(IDC_OUTPUT_TYPE), -1);
    Page().Type(IDC_BUFFER_COUNT, L"8");

    EXPECT_EQ(Page().Apply(), S_OK);

    UINT number = 0;
    EXPECT_EQ(Control().GetKernelSize(&number), S_OK);
    EXPECT_EQ(number, 7u);
    EXPECT_EQ(Control().GetOutputPixelType(&number), S_OK);
    EXPECT_EQ(number, 2u);
    EXPECT_EQ(BufferCount(), 8u);
}

TEST_F(ParametersPageDevicesTest, UseCurrentStoresWhatIsAppliedAndTakesTheEditBack)
{
    ASSERT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
    ASSERT_EQ(Control().SetBufferCount(16), S_OK);
    Show();
    EXPECT_EQ(Page().Text(IDC_DEFAULT_SUMMARY), L"");
    Page().Type(IDC_BUFFER_COUNT, L"99");

    Page().Click(IDC_USE_CURRENT);

    EXPECT_EQ(Page().Text(IDC_BUFFER_COUNT), L"16");
    EXPECT_TRUE(Page().IsDirty());
    EXPECT_EQ(Page().Text(IDC_DEFAULT_SUMMARY), L"Controlling and receiving from cam");
    const auto saved = vxds::DefaultSettings().Load();
    ASSERT_TRUE(saved);
    EXPECT_NE(saved->configuration.find(L"text:buffercount=16;"), std::wstring::npos) << "the registry's";
}

TEST_F(ParametersPageDevicesTest, ClearTakesTheDefaultOutOfTheRegistry)
{
    ASSERT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
    Show();
    Page().Click(IDC_USE_CURRENT);
    ASSERT_TRUE(vxds::DefaultSettings().Load());

    Page().Click(IDC_CLEAR);

    EXPECT_FALSE(vxds::DefaultSettings().Load());
    EXPECT_EQ(Page().Text(IDC_DEFAULT_SUMMARY), L"");
}

TEST_F(ParametersPageDevicesTest, LooksForNothingWhenItIsOnlyMadeAndConnected)
{
    Control();
    Done();

    OpenPage page(NewPage<ParametersPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);

    EXPECT_THAT(Done(), IsEmpty());
}

} // namespace
