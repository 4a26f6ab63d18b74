#include "VxDSSource/overlay/StatusSummary.h"

#include "VxDSSource/camera/VxDevice.h"
#include "VxDSSource/camera/VxStreamGEV.h"
#include "support/camera/CameraDouble.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

namespace {

/// A pin that nobody has connected.
class StatusSummaryTest : public testing::Test {
protected:
    StatusSummaryTest()
    {
        TheCamera().Reset();
        m_pin.renderWidthPx = 1280;
        m_pin.renderHeightPx = 720;
    }
    ~StatusSummaryTest() override
    {
        m_stream.reset();
        if (m_device != nullptr)
            VxDevice::Free(m_device);
        TheCamera().Reset(); // checks that nothing is left
    }

    void HaveDevice()
    {
        VxResult result;
        m_device = VxDevice::CreateAndConnect("cam", &result);
        m_pin.device = m_device;
    }

    void HaveStream()
    {
        m_stream = std::make_unique<VxStreamGEV>();
        m_pin.stream = m_stream.get();
    }

    void HaveOpenStream()
    {
        HaveStream();
        std::ignore = m_stream->Open("cam");
    }

    static ScriptedFloat& AddFloat(const char* name, double value)
    {
        auto& feature = TheCamera().stream->Add<ScriptedFloat>(name);
        feature.value = value;
        return feature;
    }

    static ScriptedEnum& AddLastError(const char* value)
    {
        ScriptedEnum& feature = TheCamera().stream->AddEnum("LastError", {value});
        feature.value = value;
        return feature;
    }

    /// The summary's line that starts so, without the start and without the line's end.
    [[nodiscard]] std::wstring Line(const std::wstring& start) const
    {
        const std::wstring text = L"\r\n" + vxds::StatusSummary(m_pin);
        const std::size_t found = text.find(L"\r\n" + start);
        if (found == std::wstring::npos)
            return L"no such line";
        const std::size_t begin = found + 2 + start.size();
        return text.substr(begin, text.find(L"\r\n", begin) - begin);
    }

    vxds::SummaryValues m_pin;
    VxDevice* m_device = nullptr;
    std::unique_ptr<VxStreamGEV> m_stream;
};

// --- Whole texts.

TEST_F(StatusSummaryTest, ShowsAPinThatNeverConnected)
{
    EXPECT_EQ(vxds::StatusSummary(m_pin), L"Device: N/A\r\n"
                                          L"Role: controller and data receiver\r\n"
                                          L"Device controller: not allocated\r\n"
                                          L"Stream receiver: not allocated\r\n"
                                          L"Render size: 1280 x 720\r\n"
                                          L"Last image size: N/A\r\n"
                                          L"Acquisition rate: 0.0 FPS\r\n"
                                          L"Bandwidth: 0.0 Mb/s\r\n"
                                          L"Blocks dropped by device: N/A\r\n"
                                          L"Blocks dropped by acquisition pipeline: 0\r\n"
                                          L"Blocks dropped by filter: 0\r\n"
                                          L"Error count: 0\r\n"
                                          L"Last error: N/A\r\n"
                                          L"Last warning: N/A\r\n");
}

TEST_F(StatusSummaryTest, ShowsAControllerThatStreams)
{
    HaveDevice();
    HaveOpenStream();
    m_pin.deviceId = L"02-00-00-00-00-01";
    m_pin.renderHeightPx = 1024;
    m_pin.lastImageWidthPx = 1280;
    m_pin.lastImageHeightPx = 1024;
    m_pin.blocksDroppedByFilter = 2;
    m_pin.lastConnectResult = VxResult::Ok();
    m_pin.lastOpenResult = VxResult::Ok();
    AddFloat("AcquisitionRate", 30.0);
    AddFloat("Bandwidth", 314572800.0);
    TheCamera().stream->AddInteger("BlocksDropped", 0);
    TheCamera().stream->AddInteger("PipelineBlocksDropped", 0);
    TheCamera().stream->AddInteger("ErrorCount", 0);

    EXPECT_EQ(vxds::StatusSummary(m_pin), L"Device: 02-00-00-00-00-01\r\n"
                                          L"Role: controller and data receiver\r\n"
                                          L"Device controller: connected\r\n"
                                          L"Stream receiver: opened\r\n"
                                          L"Render size: 1280 x 1024\r\n"
                                          L"Last image size: 1280 x 1024\r\n"
                                          L"Acquisition rate: 30.0 FPS\r\n"
                                          L"Bandwidth: 314.6 Mb/s\r\n"
                                          L"Blocks dropped by device: 0\r\n"
                                          L"Blocks dropped by acquisition pipeline: 0\r\n"
                                          L"Blocks dropped by filter: 2\r\n"
                                          L"Error count: 0\r\n"
                                          L"Last error: N/A\r\n"
                                          L"Last warning: N/A\r\n");
}

TEST_F(StatusSummaryTest, ShowsAMulticastReceiverInTrouble)
{
    HaveOpenStream();
    m_pin.deviceId = L"camera \u00E4\u4E2D";
    m_pin.role = 2;
    m_pin.multicastAddress = L"239.192.1.1";
    m_pin.multicastPort = 1042;
    m_pin.renderWidthPx = 4294967295;
    m_pin.blocksDroppedByFilter = 5000000000;
    m_pin.lastErrorText = L"No pixel conversion available to YUV422";
    m_pin.pixelVariationCount = 1234;
    m_pin.sourceWidthPx = 640;
    m_pin.sourceHeightPx = 480;
    AddFloat("AcquisitionRate", 29.97);
    AddFloat("Bandwidth", 12345678.0);
    TheCamera().stream->AddInteger("BlocksDropped", 6000000000);
    TheCamera().stream->AddInteger("PipelineBlocksDropped", 7000000000);
    TheCamera().stream->AddInteger("ErrorCount", 8000000000);
    AddLastError("MISSING_PACKETS");

    EXPECT_EQ(vxds::StatusSummary(m_pin), L"Device: camera \u00E4\u4E2D\r\n"
                                          L"Role: multicast receiver, 239.192.1.1:1042\r\n"
                                          L"Device controller: not allocated\r\n"
                                          L"Stream receiver: opened\r\n"
                                          L"Render size: 4294967295 x 720\r\n"
                                          L"Last image size: N/A\r\n"
                                          L"Acquisition rate: 30.0 FPS\r\n"
                                          L"Bandwidth: 12.3 Mb/s\r\n"
                                          L"Blocks dropped by device: 6000000000\r\n"
                                          L"Blocks dropped by acquisition pipeline: 7000000000\r\n"
                                          L"Blocks dropped by filter: 5000000000\r\n"
                                          L"Error count: 8000000000\r\n"
                                          L"Last error: MISSING_PACKETS\r\n"
                                          L"Last warning: No pixel conversion available to YUV422\r\n"
                                          L"Pixel variation score(%): 0.4\r\n");
}

// --- Role.

TEST_F(StatusSummaryTest, ShowsAUnicastReceiversPort)
{
    m_pin.role = 1;
    m_pin.unicastPort = 50000;

    EXPECT_EQ(Line(L"Role: "), L"unicast receiver, port 50000");
}

TEST_F(StatusSummaryTest, ShowsARoleThatThereIsNot)
{
    for (const std::uint32_t role : {3u, 7u, 4294967295u}) {
        m_pin.role = role;
        EXPECT_EQ(Line(L"Role: "), L"Unexpected role");
    }
}

// --- Device controller.

TEST_F(StatusSummaryTest, ShowsADeviceWhoseLinkIsLost)
{
    HaveDevice();
    TheCamera().isConnected = false;
    m_pin.lastConnectResult = VxError::AccessDenied; // of no interest while there is a device

    EXPECT_EQ(Line(L"Device controller: "), L"not connected");
}

TEST_F(StatusSummaryTest, ShowsWhyThereIsNoDevice)
{
    m_pin.lastConnectResult = VxResult(VxError::AccessDenied, "a sentence");

    EXPECT_EQ(Line(L"Device controller: "), L"not allocated, last connect ACCESS_DENIED");
}

TEST_F(StatusSummaryTest, ShowsALastConnectThatWentWell)
{
    m_pin.lastConnectResult = VxResult::Ok();

    EXPECT_EQ(Line(L"Device controller: "), L"not allocated, last connect OK");
}

// --- Stream receiver.

TEST_F(StatusSummaryTest, ShowsWhyThereIsNoStream)
{
    m_pin.lastOpenResult = VxError::PortInUse;

    EXPECT_EQ(Line(L"Stream receiver: "), L"not allocated, last open PORT_IN_USE");
}

TEST_F(StatusSummaryTest, ShowsWhyAStreamIsNotOpen)
{
    HaveStream();
    m_pin.lastOpenResult = VxError::NotFound;

    EXPECT_EQ(Line(L"Stream receiver: "), L"not opened, result NOT_FOUND");
}

TEST_F(StatusSummaryTest, ShowsTheResultOfAClosedStreamEvenIfThereWasNoAttempt)
{
    HaveStream();
    ASSERT_EQ(m_pin.lastOpenResult.GetCode(), 1541u);

    EXPECT_EQ(Line(L"Stream receiver: "), L"not opened, result NOT_INITIALIZED");
}

// --- Sizes.

TEST_F(StatusSummaryTest, ShowsNoImageSizeWithoutBothSides)
{
    m_pin.lastImageHeightPx = 480;
    EXPECT_EQ(Line(L"Last image size: "), L"N/A");
    m_pin.lastImageHeightPx = 0;
    m_pin.lastImageWidthPx = 640;
    EXPECT_EQ(Line(L"Last image size: "), L"N/A");
    m_pin.lastImageHeightPx = 480;
    EXPECT_EQ(Line(L"Last image size: "), L"640 x 480");
}

// --- Statistics.

TEST_F(StatusSummaryTest, ReadsTheStatisticsOfAStreamThatIsClosed)
{
    HaveStream();
    AddFloat("AcquisitionRate", 12.21);
    TheCamera().stream->AddInteger("BlocksDropped", 3);

    EXPECT_EQ(Line(L"Acquisition rate: "), L"12.2 FPS");
    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"3");
}

TEST_F(StatusSummaryTest, ShowsItsDefaultsForAStreamWithoutStatistics)
{
    HaveOpenStream();

    EXPECT_EQ(Line(L"Acquisition rate: "), L"0.0 FPS");
    EXPECT_EQ(Line(L"Bandwidth: "), L"0.0 Mb/s");
    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
    EXPECT_EQ(Line(L"Blocks dropped by acquisition pipeline: "), L"0");
    EXPECT_EQ(Line(L"Error count: "), L"0");
    EXPECT_EQ(Line(L"Last error: "), L"N/A");
}

TEST_F(StatusSummaryTest, ShowsItsDefaultsForStatisticsThatCannotBeRead)
{
    HaveOpenStream();
    AddFloat("AcquisitionRate", 30.0).reading = VxError::NotReadable;
    AddFloat("Bandwidth", 1e9).reading = VxError::NotReadable;
    TheCamera().stream->AddInteger("BlocksDropped", 1).reading = VxError::NotReadable;
    TheCamera().stream->AddInteger("PipelineBlocksDropped", 2).reading = VxError::NotReadable;
    TheCamera().stream->AddInteger("ErrorCount", 3).reading = VxError::NotReadable;
    AddLastError("TIMEOUT").reading = VxError::NotReadable;

    EXPECT_EQ(Line(L"Acquisition rate: "), L"0.0 FPS");
    EXPECT_EQ(Line(L"Bandwidth: "), L"0.0 Mb/s");
    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
    EXPECT_EQ(Line(L"Blocks dropped by acquisition pipeline: "), L"0");
    EXPECT_EQ(Line(L"Error count: "), L"0");
    EXPECT_EQ(Line(L"Last error: "), L"N/A");
}

TEST_F(StatusSummaryTest, DoesNotReadADropCountThatIsNotReadable)
{
    HaveOpenStream();
    ScriptedInteger& dropped = TheCamera().stream->AddInteger("BlocksDropped", 5);
    dropped.isReadable = false; // although a read would deliver

    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
}

TEST_F(StatusSummaryTest, TakesADropCountOfAnotherTypeForMissing)
{
    HaveOpenStream();
    AddFloat("BlocksDropped", 5.0);

    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
}

TEST_F(StatusSummaryTest, ShowsNoNegativeDropCountOfADevice)
{
    HaveOpenStream();
    TheCamera().stream->AddInteger("BlocksDropped", -4);
    TheCamera().stream->AddInteger("PipelineBlocksDropped", -5);
    m_pin.blocksDroppedByFilter = -6;

    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
    EXPECT_EQ(Line(L"Blocks dropped by acquisition pipeline: "), L"-5");
    EXPECT_EQ(Line(L"Blocks dropped by filter: "), L"-6");
}

// --- Score.

TEST_F(StatusSummaryTest, ShowsNoScoreWithoutACount)
{
    m_pin.sourceWidthPx = 640;
    m_pin.sourceHeightPx = 480;
    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"no such line");
    m_pin.pixelVariationCount = -1;
    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"no such line");
}

TEST_F(StatusSummaryTest, ShowsAScoreThatRoundsToNothing)
{
    m_pin.pixelVariationCount = 1;
    m_pin.sourceWidthPx = 640;
    m_pin.sourceHeightPx = 480;

    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"0.0");
}

TEST_F(StatusSummaryTest, CapsTheScore)
{
    m_pin.sourceWidthPx = 10;
    m_pin.sourceHeightPx = 10;
    m_pin.pixelVariationCount = 100;
    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"100.0");
    m_pin.pixelVariationCount = 101;
    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"100.0");
    m_pin.pixelVariationCount = 2147483647;
    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"100.0");
    m_pin.sourceWidthPx = 0; // a camera whose size is not known
    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"100.0");
}

TEST_F(StatusSummaryTest, MultipliesTheSidesAsSigned32BitNumbers)
{
    m_pin.pixelVariationCount = 1000000;
    m_pin.sourceWidthPx = 65536;
    m_pin.sourceHeightPx = 65537; // 65536 is left of the product

    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"100.0");
    m_pin.sourceHeightPx = 49152; // the product is -1073741824
    EXPECT_EQ(Line(L"Pixel variation score(%): "), L"-0.1");
}

// --- One frame to the next.

TEST_F(StatusSummaryTest, KeepsNoFormattingForTheNextText)
{
    EXPECT_EQ(vxds::StatusSummary(m_pin), vxds::StatusSummary(m_pin));
}

} // namespace
