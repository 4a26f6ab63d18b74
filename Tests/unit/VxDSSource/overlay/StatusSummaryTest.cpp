#include "VxDSSource/overlay/StatusSummary.h"

#include "support/camera/CameraDouble.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using vxds::LinkEnd;

/// The texts of a role's line, whole.
struct RoleLine {
    std::uint32_t role;
    const wchar_t* line;
};

constexpr RoleLine kRoles[] = {
    {0, L"Role: controller and data receiver\r\n"},
    {1, L"Role: unicast receiver, port 50000\r\n"},
    {2, L"Role: multicast receiver, 239.192.1.1:1042\r\n"},
    {7, L"Role: Unexpected role\r\n"},
};

/// A pin that nobody has connected.
class StatusSummaryTest : public testing::Test {
protected:
    StatusSummaryTest()
    {
        TheCamera().Reset();
        m_pin.renderWidthPx = 1280;
        m_pin.renderHeightPx = 720;
    }

    void HaveStream(LinkEnd stream)
    {
        m_pin.link.stream = stream;
        m_pin.statistics = TheCamera().stream.get();
    }

    /// Whatever else there is, in every role: the text before the role's line, and the text behind it.
    void ExpectInEveryRole(const std::wstring& before, const std::wstring& behind)
    {
        m_pin.unicastPort = 50000;
        m_pin.multicastAddress = L"239.192.1.1";
        m_pin.multicastPort = 1042;
        for (const RoleLine& each : kRoles) {
            m_pin.role = each.role;
            std::wstring expected = before;
            expected.append(each.line).append(behind);
            EXPECT_EQ(vxds::StatusSummary(m_pin), expected);
        }
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
};

// --- Whole texts, of each state in each role.

TEST_F(StatusSummaryTest, ShowsAPinThatNeverConnected)
{
    // As it was made.

    ExpectInEveryRole(L"Device: N/A\r\n", L"Device controller: not allocated\r\n"
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

TEST_F(StatusSummaryTest, ShowsAPinThatFailedToConnectAndToOpen)
{
    m_pin.deviceId = L"cam";
    m_pin.link.lastConnectResult = VxResult(VxError::AccessDenied, "a sentence");
    m_pin.link.lastOpenResult = VxError::PortInUse;

    ExpectInEveryRole(L"Device: cam\r\n", L"Device controller: not allocated, last connect ACCESS_DENIED\r\n"
                                          L"Stream receiver: not allocated, last open PORT_IN_USE\r\n"
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

TEST_F(StatusSummaryTest, ShowsAPinThatWasConnectedAndClosed)
{
    m_pin.deviceId = L"cam";
    m_pin.link.lastConnectResult = VxResult::Ok();
    m_pin.link.lastOpenResult = VxResult::Ok();

    ExpectInEveryRole(L"Device: cam\r\n", L"Device controller: not allocated, last connect OK\r\n"
                                          L"Stream receiver: not allocated, last open OK\r\n"
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

TEST_F(StatusSummaryTest, ShowsADeviceWithoutAStream)
{
    m_pin.deviceId = L"cam";
    m_pin.link.device = LinkEnd::Open;
    m_pin.link.lastConnectResult = VxResult::Ok();
    m_pin.link.lastOpenResult = VxError::NotFound;

    ExpectInEveryRole(L"Device: cam\r\n", L"Device controller: connected\r\n"
                                          L"Stream receiver: not allocated, last open NOT_FOUND\r\n"
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

TEST_F(StatusSummaryTest, ShowsADeviceWhoseLinkIsLost)
{
    m_pin.deviceId = L"cam";
    m_pin.link.device = LinkEnd::Closed;
    m_pin.link.lastConnectResult = VxError::AccessDenied; // of no interest while there is a device
    HaveStream(LinkEnd::Open);

    ExpectInEveryRole(L"Device: cam\r\n", L"Device controller: not connected\r\n"
                                          L"Stream receiver: opened\r\n"
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

TEST_F(StatusSummaryTest, ShowsWhyAStreamIsNotOpen)
{
    m_pin.link.device = LinkEnd::Open;
    HaveStream(LinkEnd::Closed);
    m_pin.link.lastOpenResult = VxError::NotFound;

    ExpectInEveryRole(L"Device: N/A\r\n", L"Device controller: connected\r\n"
                                          L"Stream receiver: not opened, result NOT_FOUND\r\n"
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

TEST_F(StatusSummaryTest, ShowsTheResultOfAClosedStreamEvenIfThereWasNoAttempt)
{
    HaveStream(LinkEnd::Closed);
    ASSERT_EQ(m_pin.link.lastOpenResult.GetCode(), 1541u);

    ExpectInEveryRole(L"Device: N/A\r\n", L"Device controller: not allocated\r\n"
                                          L"Stream receiver: not opened, result NOT_INITIALIZED\r\n"
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

TEST_F(StatusSummaryTest, ShowsAReceiverOfAStreamThatItDoesNotControl)
{
    m_pin.deviceId = L"cam";
    m_pin.lastImageWidthPx = 640;
    m_pin.lastImageHeightPx = 480;
    m_pin.link.lastOpenResult = VxResult::Ok();
    HaveStream(LinkEnd::Open);
    AddFloat("AcquisitionRate", 25.04);

    ExpectInEveryRole(L"Device: cam\r\n", L"Device controller: not allocated\r\n"
                                          L"Stream receiver: opened\r\n"
                                          L"Render size: 1280 x 720\r\n"
                                          L"Last image size: 640 x 480\r\n"
                                          L"Acquisition rate: 25.0 FPS\r\n"
                                          L"Bandwidth: 0.0 Mb/s\r\n"
                                          L"Blocks dropped by device: N/A\r\n"
                                          L"Blocks dropped by acquisition pipeline: 0\r\n"
                                          L"Blocks dropped by filter: 0\r\n"
                                          L"Error count: 0\r\n"
                                          L"Last error: N/A\r\n"
                                          L"Last warning: N/A\r\n");
}

TEST_F(StatusSummaryTest, ShowsAPinThatStreams)
{
    m_pin.deviceId = L"02-00-00-00-00-01";
    m_pin.renderHeightPx = 1024;
    m_pin.lastImageWidthPx = 1280;
    m_pin.lastImageHeightPx = 1024;
    m_pin.blocksDroppedByFilter = 2;
    m_pin.link.device = LinkEnd::Open;
    m_pin.link.lastConnectResult = VxResult::Ok();
    m_pin.link.lastOpenResult = VxResult::Ok();
    HaveStream(LinkEnd::Open);
    AddFloat("AcquisitionRate", 30.0);
    AddFloat("Bandwidth", 314572800.0);
    TheCamera().stream->AddInteger("BlocksDropped", 0);
    TheCamera().stream->AddInteger("PipelineBlocksDropped", 0);
    TheCamera().stream->AddInteger("ErrorCount", 0);

    ExpectInEveryRole(L"Device: 02-00-00-00-00-01\r\n", L"Device controller: connected\r\n"
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

TEST_F(StatusSummaryTest, ShowsAPinInTrouble)
{
    m_pin.deviceId = L"camera \u00E4\u4E2D";
    m_pin.renderWidthPx = 4294967295;
    m_pin.blocksDroppedByFilter = 5000000000;
    m_pin.lastErrorText = L"No pixel conversion available to YUV422";
    m_pin.pixelVariationCount = 1234;
    m_pin.sourceWidthPx = 640;
    m_pin.sourceHeightPx = 480;
    m_pin.link.device = LinkEnd::Closed;
    HaveStream(LinkEnd::Open);
    AddFloat("AcquisitionRate", 29.97);
    AddFloat("Bandwidth", 12345678.0);
    TheCamera().stream->AddInteger("BlocksDropped", 6000000000);
    TheCamera().stream->AddInteger("PipelineBlocksDropped", 7000000000);
    TheCamera().stream->AddInteger("ErrorCount", 8000000000);
    AddLastError("MISSING_PACKETS");

    ExpectInEveryRole(L"Device: camera \u00E4\u4E2D\r\n",
                      L"Device controller: not connected\r\n"
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

TEST_F(StatusSummaryTest, ShowsOnlyTheScoreBesideItsDefaults)
{
    m_pin.pixelVariationCount = 2147483647;
    m_pin.sourceWidthPx = 640;
    m_pin.sourceHeightPx = 480;

    ExpectInEveryRole(L"Device: N/A\r\n", L"Device controller: not allocated\r\n"
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
                                          L"Last warning: N/A\r\n"
                                          L"Pixel variation score(%): 100.0\r\n");
}

TEST_F(StatusSummaryTest, ShowsAStreamThatCannotBeAsked)
{
    // As while the link is busy.
    m_pin.deviceId = L"cam";
    m_pin.link.device = LinkEnd::Open;
    m_pin.link.stream = LinkEnd::Open;
    m_pin.lastImageWidthPx = 8;
    m_pin.lastImageHeightPx = 4;

    ExpectInEveryRole(L"Device: cam\r\n", L"Device controller: connected\r\n"
                                          L"Stream receiver: opened\r\n"
                                          L"Render size: 1280 x 720\r\n"
                                          L"Last image size: 8 x 4\r\n"
                                          L"Acquisition rate: 0.0 FPS\r\n"
                                          L"Bandwidth: 0.0 Mb/s\r\n"
                                          L"Blocks dropped by device: N/A\r\n"
                                          L"Blocks dropped by acquisition pipeline: 0\r\n"
                                          L"Blocks dropped by filter: 0\r\n"
                                          L"Error count: 0\r\n"
                                          L"Last error: N/A\r\n"
                                          L"Last warning: N/A\r\n");
}

// --- Role.

TEST_F(StatusSummaryTest, ShowsPortsOf32Bits)
{
    m_pin.role = 1;
    m_pin.unicastPort = 4294967295;
    EXPECT_EQ(Line(L"Role: "), L"unicast receiver, port 4294967295");
    m_pin.role = 2;
    m_pin.multicastPort = 4294967295;
    EXPECT_EQ(Line(L"Role: "), L"multicast receiver, :4294967295");
}

TEST_F(StatusSummaryTest, ShowsARoleThatThereIsNot)
{
    for (const std::uint32_t role : {3u, 7u, 4294967295u}) {
        m_pin.role = role;
        EXPECT_EQ(Line(L"Role: "), L"Unexpected role");
    }
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
    HaveStream(LinkEnd::Closed);
    AddFloat("AcquisitionRate", 12.21);
    TheCamera().stream->AddInteger("BlocksDropped", 3);

    EXPECT_EQ(Line(L"Acquisition rate: "), L"12.2 FPS");
    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"3");
}

TEST_F(StatusSummaryTest, ShowsItsDefaultsForAStreamWithoutStatistics)
{
    HaveStream(LinkEnd::Open);

    EXPECT_EQ(Line(L"Acquisition rate: "), L"0.0 FPS");
    EXPECT_EQ(Line(L"Bandwidth: "), L"0.0 Mb/s");
    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
    EXPECT_EQ(Line(L"Blocks dropped by acquisition pipeline: "), L"0");
    EXPECT_EQ(Line(L"Error count: "), L"0");
    EXPECT_EQ(Line(L"Last error: "), L"N/A");
}

TEST_F(StatusSummaryTest, ShowsItsDefaultsForStatisticsThatCannotBeRead)
{
    HaveStream(LinkEnd::Open);
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
    HaveStream(LinkEnd::Open);
    ScriptedInteger& dropped = TheCamera().stream->AddInteger("BlocksDropped", 5);
    dropped.isReadable = false; // although a read would deliver

    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
}

TEST_F(StatusSummaryTest, TakesADropCountOfAnotherTypeForMissing)
{
    HaveStream(LinkEnd::Open);
    AddFloat("BlocksDropped", 5.0);

    EXPECT_EQ(Line(L"Blocks dropped by device: "), L"N/A");
}

TEST_F(StatusSummaryTest, ShowsNoNegativeDropCountOfADevice)
{
    HaveStream(LinkEnd::Open);
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
