#include "SimulatedCameraFixture.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

namespace {

/// Whether the camera sends chunks behind an image, and whether its ids are the extended ones.
class SimulatedChunksTest : public SimulatedCameraFixture,
                            public testing::WithParamInterface<std::tuple<bool, bool>> {
protected:
#ifdef _WIN32
    static constexpr double kFramesPerSecond = 10; // see SimulatedStreamTest
#else
    static constexpr double kFramesPerSecond = 20; // chosen: every picture is drawn anew to be compared
#endif

    void StartAll(const VxSimulatorFaults& faults = {}, double framesPerSecond = kFramesPerSecond)
    {
        VxSimulatorOptions options;
        options.frameRateHz = framesPerSecond;
        options.faults = faults;
        StartCamera(options);
        m_link.Connect(kAddress);
        Set("GevSCCFGExtendedChunkData", std::get<0>(GetParam()) ? "true" : "false");
        Set("GevGVSPExtendedIDMode", std::get<1>(GetParam()) ? "On" : "Off");
        const std::uint32_t picture = m_link.device->GetPayloadSize();
        Set("ChunkModeActive", "true");
        for (const char* chunk : {"FrameID", "Timestamp"}) {
            Set("ChunkSelector", chunk);
            Set("ChunkEnable", "true");
        }
        EXPECT_EQ(m_link.device->GetPayloadSize(), picture + 8 + 16 + 16);
        m_link.OpenStream(kAddress);
        Set("GevSCPSPacketSize", "1500");
        m_link.Start();
    }
    void Set(const char* name, const char* value)
    {
        const VxResult result = m_link.Features().Get(name)->FromString(value);
        ASSERT_TRUE(result.IsOK()) << name << ": " << result.GetDescription().Narrow();
    }
};

TEST_P(SimulatedChunksTest, PicturesAreWholeWithChunksBehindThem)
{
    constexpr int kFrames = 5;
    StartAll();

    for (int i = 0; i < kFrames; ++i)
        EXPECT_TRUE(IsWholePicture(*m_link.Next()));
    EXPECT_EQ(m_link.Statistic("PacketsWrongSize"), 0);
    m_link.Stop();
}

TEST_P(SimulatedChunksTest, PicturesAreWholeWithChunksBehindThemWhenPacketsAreLost)
{
    constexpr int kFrames = 8;
    // The camera keeps four frames. Chosen: a busy machine has stood still for half a second.
    constexpr double kFewFramesPerSecond = 5;
    StartAll({.dropShare = 0.05}, kFewFramesPerSecond); // those sent again included

    int whole = 0;
    for (int i = 0; i < kFrames; ++i) // 212 packets each and more
        whole += IsWholePicture(*m_link.Next()) ? 1 : 0;

    EXPECT_EQ(whole, kFrames) << "missing " << m_link.Statistic("PacketsMissing") << ", requested again "
                              << m_link.Statistic("PacketsRequestedAgain") << ", recovered "
                              << m_link.Statistic("PacketsRecovered") << ", refused "
                              << m_link.Statistic("PacketsRefused") << ", late "
                              << m_link.Statistic("PacketsLate") << ", wrong size "
                              << m_link.Statistic("PacketsWrongSize");
    EXPECT_GT(m_link.Statistic("PacketsRecovered"), kFrames);
    m_link.Stop();
}

TEST_P(SimulatedChunksTest, FeaturesOfChunksAreListedAndSayThatTheirValuesComeWithAPicture)
{
    StartAll();

    EXPECT_TRUE(IsWholePicture(*m_link.Next()));
    for (const char* name : {"ChunkFrameID", "ChunkTimestamp"}) {
        std::int64_t value = 0;
        const VxResult read = m_link.Features().GetIntegerValue(name, value);
        EXPECT_FALSE(read.IsOK()) << name;
        EXPECT_FALSE(m_link.Features().Get(name)->IsAvailable()) << name;
    }
    m_link.Stop();
}

INSTANTIATE_TEST_SUITE_P(Ways, SimulatedChunksTest, testing::Combine(testing::Bool(), testing::Bool()),
                         [](const auto& each) {
                             return std::string(std::get<0>(each.param) ? "BehindAnImage" : "AsThePayload") +
                                    (std::get<1>(each.param) ? "ExtendedIds" : "StandardIds");
                         });

} // namespace
