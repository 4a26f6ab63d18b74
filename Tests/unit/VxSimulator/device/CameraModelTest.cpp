#include "VxSimulator/device/CameraModel.h"

#include "VxBase/VxByteOrder.h"

#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include "VxSimulator/device/SimulatedRegisters.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <optional>

namespace {

using namespace simulator;
using namespace std::chrono_literals;
using gvcp::Status;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

constexpr Ipv4Endpoint kReceiver{Ipv4Address(10, 0, 0, 1), 40000};

class CameraModelTest : public testing::Test {
protected:
    Status Write(std::uint32_t address, std::uint32_t value)
    {
        bytes::Vector word(4);
        VxStoreBe<std::uint32_t>(std::span(word).first<4>(), value);
        return m_model->Write(address, word, m_now);
    }

    Status WriteDouble(std::uint32_t address, double value)
    {
        bytes::Vector words(8);
        VxStoreBe<std::uint64_t>(std::span(words).first<8>(), std::bit_cast<std::uint64_t>(value));
        return m_model->Write(address, words, m_now);
    }

    std::uint32_t Read(std::uint32_t address)
    {
        bytes::Vector word(4);
        EXPECT_EQ(m_model->Read(address, word, m_now), Status::Success);
        return VxLoadBe<std::uint32_t>(std::span<const std::byte>(word).first<4>());
    }

    void OpenChannel()
    {
        ASSERT_EQ(Write(bootstrap::kStreamChannelDestination, kReceiver.address.Value()), Status::Success);
        ASSERT_EQ(Write(bootstrap::kStreamChannelPort, kReceiver.port), Status::Success);
    }

    void StartStreaming()
    {
        OpenChannel();
        ASSERT_EQ(Write(kAcquisitionStart, 1), Status::Success);
    }

    void UseCamera(const VxSimulatorOptions& options) { m_model.emplace(options, NetworkFacts{}, m_now); }

    static VxSimulatorOptions Options()
    {
        VxSimulatorOptions options;
        options.frameRateHz = 10;
        return options;
    }

    CameraModel::Time m_now{1h};
    std::optional<CameraModel> m_model{std::in_place, Options(), NetworkFacts{}, m_now};
};

TEST_F(CameraModelTest, ThePayloadGrowsWithTheChunksThatAreSwitchedOn)
{
    const std::uint32_t picture = Read(kPayloadSize);
    EXPECT_EQ(Write(kChunkEnable + 4, 1), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), picture) << "the mode is off";
    EXPECT_EQ(Write(kChunkModeActive, 1), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), picture + 8 + 16);
    EXPECT_EQ(Write(kChunkEnable + 8, 1), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), picture + 8 + 16 + 16);
    EXPECT_EQ(Write(kWidth, 128), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), 128 * Read(kHeight) + 40);
    EXPECT_EQ(Write(kUserSetLoad, 1), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), picture);
}

TEST_F(CameraModelTest, ThePictureIsAChunkThatStaysOn)
{
    EXPECT_EQ(Read(kChunkEnable), 1u);
    EXPECT_EQ(Write(kChunkEnable, 0), Status::Success) << "who switches everything off first is not refused";
    EXPECT_EQ(Read(kChunkEnable), 1u);
    EXPECT_EQ(Write(kChunkSelector, kChunks), Status::InvalidParameter);
}

TEST_F(CameraModelTest, FramesHaveTheChunksThatAreSwitchedOn)
{
    ASSERT_EQ(Write(kChunkEnable + 8, 1), Status::Success);
    StartStreaming();
    const auto without = m_model->TakeFrame(m_now);
    ASSERT_TRUE(without);
    EXPECT_EQ(without->chunks.way, ChunkOrder::Way::None);
    EXPECT_EQ(Write(kChunkModeActive, 1), Status::AccessDenied) << "frames would change their size";
    EXPECT_EQ(Write(kChunkEnable + 4, 1), Status::AccessDenied);
    ASSERT_EQ(Write(kAcquisitionStop, 1), Status::Success);

    ASSERT_EQ(Write(kChunkModeActive, 1), Status::Success);
    ASSERT_EQ(Write(kAcquisitionStart, 1), Status::Success);
    const auto with = m_model->TakeFrame(m_now + 1s);
    ASSERT_TRUE(with);
    EXPECT_EQ(with->chunks.way, ChunkOrder::Way::BehindImage);
    EXPECT_FALSE(with->chunks.hasFrameId);
    EXPECT_TRUE(with->chunks.hasTimestamp);
}

TEST_F(CameraModelTest, ChunksAreThePayloadForAnApplicationThatSwitchesExtendedChunksOff)
{
    using namespace bootstrap;
    EXPECT_NE(Read(kStreamChannelCapabilities) & kChannelCapabilityExtendedChunks, 0u);
    EXPECT_EQ(Read(kStreamChannelConfiguration) & kExtendedChunks, kExtendedChunks);
    ASSERT_EQ(Write(kStreamChannelConfiguration, 0), Status::Success);
    ASSERT_EQ(Write(kChunkModeActive, 1), Status::Success);
    StartStreaming();

    const auto order = m_model->TakeFrame(m_now);

    ASSERT_TRUE(order);
    EXPECT_EQ(order->chunks.way, ChunkOrder::Way::AsPayload);
}

TEST_F(CameraModelTest, SendsNothingBeforeAcquisitionIsStarted)
{
    OpenChannel();

    EXPECT_FALSE(m_model->NextFrameDue());
    EXPECT_FALSE(m_model->TakeFrame(m_now + 1s));
}

TEST_F(CameraModelTest, SendsNothingWithoutADestination)
{
    ASSERT_EQ(Write(kAcquisitionStart, 1), Status::Success);
    EXPECT_TRUE(m_model->IsAcquiring());
    EXPECT_FALSE(m_model->TakeFrame(m_now));

    ASSERT_EQ(Write(bootstrap::kStreamChannelPort, 40000), Status::Success);
    EXPECT_FALSE(m_model->TakeFrame(m_now)) << "no address";
}

TEST_F(CameraModelTest, AFrameHasTheSettingsOfItsTime)
{
    ASSERT_EQ(Write(kWidth, 320), Status::Success);
    ASSERT_EQ(Write(kHeight, 240), Status::Success);
    ASSERT_EQ(Write(kOffsetX, 16), Status::Success);
    ASSERT_EQ(Write(kOffsetY, 32), Status::Success);
    ASSERT_EQ(Write(kPixelFormat, 0x02180014), Status::Success);
    ASSERT_EQ(Write(kTestPattern, 2), Status::Success);
    ASSERT_EQ(Write(bootstrap::kStreamChannelPacketSize, 8000), Status::Success);
    ASSERT_EQ(Write(bootstrap::kStreamChannelPacketDelay, 1234), Status::Success);
    StartStreaming();

    const auto order = m_model->TakeFrame(m_now + 5ms);

    ASSERT_TRUE(order);
    EXPECT_EQ(order->widthPx, 320u);
    EXPECT_EQ(order->heightPx, 240u);
    EXPECT_EQ(order->offsetXPx, 16u);
    EXPECT_EQ(order->offsetYPx, 32u);
    EXPECT_EQ(order->format.name, "RGB8");
    EXPECT_EQ(order->pattern, TestPattern::White);
    EXPECT_EQ(order->packetSizeBytes, 8000u);
    EXPECT_EQ(order->packetDelay, 1234ns);
    EXPECT_EQ(order->idMode, gvsp::IdMode::Standard);
    EXPECT_EQ(order->destination, kReceiver);
    EXPECT_EQ(order->timestampTicks, 5000000u);
}

TEST_F(CameraModelTest, FramesComeAtTheFrameRate)
{
    StartStreaming();

    EXPECT_TRUE(m_model->TakeFrame(m_now));
    EXPECT_EQ(m_model->NextFrameDue(), m_now + 100ms);
    EXPECT_FALSE(m_model->TakeFrame(m_now + 99ms));
    EXPECT_TRUE(m_model->TakeFrame(m_now + 100ms));
}

TEST_F(CameraModelTest, TheFrameRateCanBeChangedWhileStreaming)
{
    StartStreaming();

    ASSERT_EQ(WriteDouble(kAcquisitionFrameRate, 50), Status::Success);

    EXPECT_TRUE(m_model->TakeFrame(m_now));
    EXPECT_EQ(m_model->NextFrameDue(), m_now + 20ms);
}

TEST_F(CameraModelTest, ALongExposureLimitsTheFrameRate)
{
    ASSERT_EQ(WriteDouble(kExposureTime, 500000), Status::Success);
    StartStreaming();

    EXPECT_TRUE(m_model->TakeFrame(m_now));
    EXPECT_EQ(m_model->NextFrameDue(), m_now + 500ms);
}

TEST_F(CameraModelTest, BlockIdsBeginAgainWithEachAcquisitionAndFrameNumbersGoOn)
{
    StartStreaming();
    ASSERT_TRUE(m_model->TakeFrame(m_now));
    const auto second = m_model->TakeFrame(m_now + 100ms);
    ASSERT_EQ(Write(kAcquisitionStop, 1), Status::Success);
    ASSERT_EQ(Write(kAcquisitionStart, 1), Status::Success);
    const auto third = m_model->TakeFrame(m_now + 200ms);

    ASSERT_TRUE(second && third);
    EXPECT_EQ(second->blockId, 2u);
    EXPECT_EQ(second->frameNumber, 1u);
    EXPECT_EQ(third->blockId, 1u);
    EXPECT_EQ(third->frameNumber, 2u);
}

TEST_F(CameraModelTest, ASecondStartChangesNothing)
{
    StartStreaming();
    ASSERT_TRUE(m_model->TakeFrame(m_now));

    ASSERT_EQ(Write(kAcquisitionStart, 1), Status::Success);

    EXPECT_EQ(m_model->NextFrameDue(), m_now + 100ms);
}

TEST_F(CameraModelTest, ExtendedIdsAreUsedOnRequest)
{
    ASSERT_EQ(Write(bootstrap::kGvspConfiguration, 0xFFFFFFFF), Status::Success);
    StartStreaming();

    const auto order = m_model->TakeFrame(m_now);

    ASSERT_TRUE(order);
    EXPECT_EQ(order->idMode, gvsp::IdMode::Extended);
    EXPECT_EQ(Read(bootstrap::kGvspConfiguration), 0x40000000u) << "the only bit there is";
}

TEST_F(CameraModelTest, SingleFrameGivesOneFrame)
{
    ASSERT_EQ(Write(kAcquisitionMode, 1), Status::Success);
    StartStreaming();

    EXPECT_TRUE(m_model->TakeFrame(m_now));
    EXPECT_FALSE(m_model->IsAcquiring());
    EXPECT_FALSE(m_model->TakeFrame(m_now + 1s));
}

TEST_F(CameraModelTest, MultiFrameGivesAsManyFramesAsAskedFor)
{
    ASSERT_EQ(Write(kAcquisitionMode, 2), Status::Success);
    ASSERT_EQ(Write(kAcquisitionFrameCount, 3), Status::Success);
    StartStreaming();

    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(m_model->TakeFrame(m_now + i * 100ms)) << i;
    EXPECT_FALSE(m_model->IsAcquiring());
}

TEST_F(CameraModelTest, ASoftwareTriggerGivesOneFrame)
{
    ASSERT_EQ(Write(kTriggerMode, 1), Status::Success);
    StartStreaming();

    EXPECT_FALSE(m_model->TakeFrame(m_now));
    ASSERT_EQ(Write(kTriggerSoftware, 1), Status::Success);
    EXPECT_TRUE(m_model->TakeFrame(m_now));
    EXPECT_FALSE(m_model->TakeFrame(m_now + 1s));
}

TEST_F(CameraModelTest, FallsSilentAfterItsLimitOfFrames)
{
    auto options = Options();
    options.frameLimit = 2;
    UseCamera(options);
    StartStreaming();

    EXPECT_TRUE(m_model->TakeFrame(m_now));
    EXPECT_TRUE(m_model->TakeFrame(m_now + 1s));
    EXPECT_FALSE(m_model->TakeFrame(m_now + 2s));
    EXPECT_TRUE(m_model->IsAcquiring()) << "but nobody is told";
}

TEST_F(CameraModelTest, SizeAndFormatAreLockedWhileAcquiring)
{
    StartStreaming();

    EXPECT_EQ(Write(kWidth, 320), Status::AccessDenied);
    EXPECT_EQ(Write(kHeight, 240), Status::AccessDenied);
    EXPECT_EQ(Write(kOffsetX, 4), Status::AccessDenied);
    EXPECT_EQ(Write(kPixelFormat, 0x02180014), Status::AccessDenied);
    EXPECT_EQ(Write(kUserSetLoad, 1), Status::AccessDenied);
    EXPECT_EQ(Write(kGainRaw, 100), Status::Success);

    ASSERT_EQ(Write(kAcquisitionStop, 1), Status::Success);
    EXPECT_EQ(Write(kWidth, 320), Status::Success);
}

TEST_F(CameraModelTest, PayloadSizeFollowsSizeAndFormat)
{
    EXPECT_EQ(Read(kPayloadSize), 640u * 480);
    ASSERT_EQ(Write(kWidth, 320), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), 320u * 480);
    ASSERT_EQ(Write(kHeight, 240), Status::Success);
    ASSERT_EQ(Write(kPixelFormat, 0x02180015), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), 320u * 240 * 3);
}

TEST_F(CameraModelTest, ThePacketSizeIsClampedToWholeSteps)
{
    using bootstrap::kStreamChannelPacketSize;
    ASSERT_EQ(Write(kStreamChannelPacketSize, 100), Status::Success);
    EXPECT_EQ(Read(kStreamChannelPacketSize), 220u);
    ASSERT_EQ(Write(kStreamChannelPacketSize, 1503), Status::Success);
    EXPECT_EQ(Read(kStreamChannelPacketSize), 1500u);
    ASSERT_EQ(Write(kStreamChannelPacketSize, 65535), Status::Success);
    EXPECT_EQ(Read(kStreamChannelPacketSize), 65532u);
}

TEST_F(CameraModelTest, ATestPacketIsSentOnceAndTheBitClearsItself)
{
    OpenChannel();

    ASSERT_EQ(Write(bootstrap::kStreamChannelPacketSize, 0xC00005DC), Status::Success);

    EXPECT_EQ(Read(bootstrap::kStreamChannelPacketSize), 0x400005DCu);
    const auto packet = m_model->TakeTestPacket();
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->destination, kReceiver);
    EXPECT_EQ(packet->packetSizeBytes, 1500u);
    EXPECT_FALSE(m_model->TakeTestPacket());
}

TEST_F(CameraModelTest, ATestPacketNeedsADestination)
{
    ASSERT_EQ(Write(bootstrap::kStreamChannelPacketSize, 0x800005DC), Status::Success);

    EXPECT_FALSE(m_model->TakeTestPacket());
}

TEST_F(CameraModelTest, PixelsAreNeverBigEndian)
{
    ASSERT_EQ(Write(bootstrap::kStreamChannelPacketSize, 0x200005DC), Status::Success);

    EXPECT_EQ(Read(bootstrap::kStreamChannelPacketSize), 1500u);
}

TEST_F(CameraModelTest, TheTimestampIsLatchedAndReset)
{
    m_now += 5s;
    ASSERT_EQ(Write(bootstrap::kTimestampControl, 2), Status::Success);
    m_now += 1s;
    EXPECT_EQ(Read(bootstrap::kTimestampValueHigh), 1u);
    EXPECT_EQ(Read(bootstrap::kTimestampValueLow), 5000000000u - 4294967296u);

    ASSERT_EQ(Write(bootstrap::kTimestampControl, 1), Status::Success);
    m_now += 7ns;
    ASSERT_EQ(Write(bootstrap::kTimestampControl, 2), Status::Success);
    EXPECT_EQ(Read(bootstrap::kTimestampValueHigh), 0u);
    EXPECT_EQ(Read(bootstrap::kTimestampValueLow), 7u);
}

TEST_F(CameraModelTest, TheHeartbeatTimeoutHasALowestValue)
{
    ASSERT_EQ(Write(bootstrap::kHeartbeatTimeout, 10), Status::Success);
    EXPECT_EQ(m_model->HeartbeatTimeout(), 500ms);
    ASSERT_EQ(Write(bootstrap::kHeartbeatTimeout, 60000), Status::Success);
    EXPECT_EQ(m_model->HeartbeatTimeout(), 60s);
}

TEST_F(CameraModelTest, LosingControlEndsAcquisitionAndClosesTheChannel)
{
    StartStreaming();

    m_model->ControlLost();

    EXPECT_FALSE(m_model->IsAcquiring());
    EXPECT_EQ(Read(bootstrap::kStreamChannelPort), 0u);
    EXPECT_FALSE(m_model->TakeFrame(m_now));
}

TEST_F(CameraModelTest, UnconditionalStreamingGoesOnWithoutControl)
{
    ASSERT_EQ(Write(bootstrap::kStreamChannelConfiguration, 0xFFFFFFFF), Status::Success);
    EXPECT_EQ(Read(bootstrap::kStreamChannelConfiguration), 3u) << "the only bits there are";
    StartStreaming();

    m_model->ControlLost();

    EXPECT_TRUE(m_model->TakeFrame(m_now));
}

TEST_F(CameraModelTest, LoadingTheUserSetRestoresTheStart)
{
    ASSERT_EQ(Write(kWidth, 320), Status::Success);
    ASSERT_EQ(Write(kPixelFormat, 0x02180015), Status::Success);
    ASSERT_EQ(Write(kTriggerMode, 1), Status::Success);

    ASSERT_EQ(Write(kUserSetLoad, 1), Status::Success);

    EXPECT_EQ(Read(kUserSetLoad), 0u) << "done";
    EXPECT_EQ(Read(kWidth), 640u);
    EXPECT_EQ(Read(kPayloadSize), 640u * 480);
    StartStreaming();
    EXPECT_TRUE(m_model->TakeFrame(m_now)) << "not triggered any more";
}

TEST_F(CameraModelTest, TheStatusCountsRefusalsAndTellsWhetherItIsBusy)
{
    EXPECT_EQ(Read(kDeviceStatus), 0u);
    m_model->CountRefusal();
    m_model->CountRefusal();
    StartStreaming();

    EXPECT_EQ(Read(kDeviceStatus), 0x00020001u);
}

TEST_F(CameraModelTest, TheTemperatureChangesWithTime)
{
    const auto cold = std::bit_cast<float>(Read(kDeviceTemperature));
    m_now += 60s;
    const auto hot = std::bit_cast<float>(Read(kDeviceTemperature));

    EXPECT_FLOAT_EQ(cold, 35.0F);
    EXPECT_FLOAT_EQ(hot, 45.0F);
}

TEST_F(CameraModelTest, ValuesOutsideTheirLimitsAreRefusedAndChangeNothing)
{
    EXPECT_EQ(Write(kWidth, 124), Status::InvalidParameter);
    EXPECT_EQ(Write(kWidth, 130), Status::InvalidParameter);
    EXPECT_EQ(Write(kWidth, 4100), Status::InvalidParameter) << "the sensor has 4096 columns";
    EXPECT_EQ(Write(kHeight, 63), Status::InvalidParameter);
    EXPECT_EQ(Write(kPixelFormat, 0x01100003), Status::InvalidParameter) << "Mono10";
    EXPECT_EQ(Write(kAcquisitionMode, 3), Status::InvalidParameter);
    EXPECT_EQ(Write(kAcquisitionFrameCount, 0), Status::InvalidParameter);
    EXPECT_EQ(Write(kGainRaw, 2401), Status::InvalidParameter);
    EXPECT_EQ(WriteDouble(kAcquisitionFrameRate, 0), Status::InvalidParameter);
    EXPECT_EQ(WriteDouble(kAcquisitionFrameRate, std::numeric_limits<double>::quiet_NaN()),
              Status::InvalidParameter);
    EXPECT_EQ(WriteDouble(kExposureTime, 1e7), Status::InvalidParameter);

    EXPECT_EQ(Read(kWidth), 640u);
    EXPECT_EQ(Read(kPixelFormat), 0x01080001u);
}

TEST_F(CameraModelTest, SizeAndOffsetTogetherStayOnTheSensor)
{
    ASSERT_EQ(Write(kOffsetX, 4096 - 640), Status::Success);
    EXPECT_EQ(Write(kOffsetX, 4096 - 636), Status::InvalidParameter);
    EXPECT_EQ(Write(kWidth, 644), Status::InvalidParameter);
    EXPECT_EQ(Write(kWidth, 636), Status::Success);

    ASSERT_EQ(Write(kOffsetY, 3072 - 480), Status::Success);
    EXPECT_EQ(Write(kHeight, 482), Status::InvalidParameter);
}

TEST_F(CameraModelTest, SizeAndOffsetCanBeWrittenTogether)
{
    // Width, Height, OffsetX, OffsetY are neighbours.
    const auto whole = bytes::FromHex("00 00 10 00 | 00 00 0C 00 | 00 00 00 00 | 00 00 00 00");
    ASSERT_EQ(Write(kOffsetX, 1024), Status::Success);

    EXPECT_EQ(m_model->Write(kWidth, whole, m_now), Status::Success);
    EXPECT_EQ(Read(kPayloadSize), 4096u * 3072);
}

TEST_F(CameraModelTest, RegistersThatTellWhatTheCameraIsCannotBeWritten)
{
    EXPECT_EQ(Write(bootstrap::kVersion, 0), Status::WriteProtect);
    EXPECT_EQ(Write(bootstrap::kGvcpCapability, 0), Status::WriteProtect);
    EXPECT_EQ(Write(kPayloadSize, 0), Status::WriteProtect);
    EXPECT_EQ(Write(0xF000, 0), Status::InvalidAddress);
    EXPECT_EQ(Write(kWidth + 2, 0), Status::BadAlignment);
}

TEST_F(CameraModelTest, UserDefinedNameAndLookUpTableCanBeWritten)
{
    const auto name = bytes::FromHex("63 61 6D 2D 6C 65 66 74 00 00 00 00 00 00 00 00");
    ASSERT_EQ(m_model->Write(bootstrap::kUserDefinedName, name, m_now), Status::Success);
    bytes::Vector read(16);
    ASSERT_EQ(m_model->Read(bootstrap::kUserDefinedName, read, m_now), Status::Success);
    EXPECT_EQ(read, name);

    ASSERT_EQ(Write(kLut + 252, 0xCAFE), Status::Success);
    EXPECT_EQ(Read(kLut + 252), 0xCAFEu);
}

} // namespace
