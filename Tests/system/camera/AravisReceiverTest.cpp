#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/TestPicture.h"

#include <gtest/gtest.h>

// The library of an independent receiver, which somebody else wrote.
#include <arv.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <tuple>

namespace {

constexpr int kPacketBytes = 1500;
constexpr guint64 kPatienceUs = 10'000'000; // chosen: longer than any step takes
constexpr int kBuffers = 16;

// Chosen: longer than a busy machine stands still for. As it comes, that receiver gives a frame up after
// 100 ms, or when it has asked for a quarter of its packets.
constexpr guint kLongRetentionUs = 2'000'000;
constexpr double kManyRequests = 2;

/// An independent receiver, in control of the camera at 127.0.0.1 and streaming from it.
///
/// Owner:  the test.
/// Thread: one; the library has its own.
class IndependentReceiver {
public:
    ~IndependentReceiver()
    {
        if (m_camera != nullptr)
            arv_camera_stop_acquisition(m_camera, nullptr);
        g_clear_object(&m_stream);
        g_clear_object(&m_camera);
    }

    /// What is done with the camera before it streams.
    using SetUp = std::function<void(ArvCamera&)>;

    /// From now on it gives no frame up before the camera does.
    void BePatient()
    {
        g_object_set(m_stream, "frame-retention", kLongRetentionUs, "packet-request-ratio", kManyRequests,
                     nullptr);
    }

    /// Failures are failures of the test.
    void Start(const SetUp& setUp = {})
    {
        GError* error = nullptr;
        m_camera = arv_camera_new("127.0.0.1", &error);
        ASSERT_EQ(error, nullptr) << error->message;
        arv_camera_gv_set_packet_size_adjustment(m_camera, ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
        arv_camera_gv_set_stream_options(m_camera, ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
        arv_camera_gv_set_packet_size(m_camera, kPacketBytes, &error);
        ASSERT_EQ(error, nullptr) << error->message;
        if (setUp)
            setUp(*m_camera);
        m_stream = arv_camera_create_stream(m_camera, nullptr, nullptr, &error);
        ASSERT_EQ(error, nullptr) << error->message;
        g_object_set(m_stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                     1 << 23, nullptr);
        const guint bytes = arv_camera_get_payload(m_camera, nullptr);
        for (int i = 0; i < kBuffers; ++i)
            arv_stream_push_buffer(m_stream, arv_buffer_new_allocate(bytes));
        arv_camera_start_acquisition(m_camera, &error);
        ASSERT_EQ(error, nullptr) << error->message;
    }

    /// Waits for the next frame.
    /// @return  whether it is complete; every complete one is compared with what the camera sent
    bool NextIsComplete()
    {
        return NextIsComplete([](ArvBuffer& buffer) { ExpectAsSent(buffer); });
    }

    /// @param expect  is called with a frame that is complete
    bool NextIsComplete(const std::function<void(ArvBuffer&)>& expect)
    {
        ArvBuffer* const buffer = arv_stream_timeout_pop_buffer(m_stream, kPatienceUs);
        if (buffer == nullptr) {
            ADD_FAILURE() << "no frame";
            return false;
        }
        const bool isComplete = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
        if (isComplete)
            expect(*buffer);
        arv_stream_push_buffer(m_stream, buffer);
        return isComplete;
    }

    [[nodiscard]] std::uint64_t Counted(const char* name) const
    {
        return arv_stream_get_info_uint64_by_name(m_stream, name);
    }

    /// What that library reads in the chunks of a frame.
    [[nodiscard]] std::int64_t ChunkValue(ArvBuffer& buffer, const char* name) const
    {
        g_autoptr(ArvChunkParser) parser = arv_camera_create_chunk_parser(m_camera);
        g_autoptr(GError) error = nullptr;
        const std::int64_t value = arv_chunk_parser_get_integer_value(parser, &buffer, name, &error);
        EXPECT_EQ(error, nullptr) << error->message;
        return value;
    }

    /// @param format  PFNC code, which not every payload tells
    static void ExpectPicture(std::span<const std::byte> received, std::uint32_t width, std::uint32_t height,
                              std::uint32_t format)
    {
        const auto number = simulator::ReadFrameNumber({.pixels = received,
                                                        .widthPx = width,
                                                        .heightPx = height,
                                                        .strideBytes = width,
                                                        .bytesPerPixel = 1});
        ASSERT_TRUE(number) << "no frame number in the picture";
        const auto sent = simulator::TestPicture(*number, width, height, format);
        EXPECT_TRUE(std::ranges::equal(received, sent)) << "frame " << *number << " is not what was sent";
    }

private:
    static void ExpectAsSent(ArvBuffer& buffer)
    {
        std::size_t bytes = 0;
        const void* const data = arv_buffer_get_data(&buffer, &bytes);
        ExpectPicture({static_cast<const std::byte*>(data), bytes},
                      static_cast<std::uint32_t>(arv_buffer_get_image_width(&buffer)),  // positive
                      static_cast<std::uint32_t>(arv_buffer_get_image_height(&buffer)), // positive
                      arv_buffer_get_image_pixel_format(&buffer));
    }

    ArvCamera* m_camera = nullptr;
    ArvStream* m_stream = nullptr;
};

/// The simulated camera before a receiver that knows nothing of ours.
class AravisReceiverTest : public testing::Test {
protected:
    static constexpr int kFrames = 40;
    /// Chosen: that receiver gives a frame up after 100 ms, which a busy machine may stand still for.
    static constexpr int kWholeFrames = kFrames - 2;

    static constexpr std::uint32_t kWidthPx = 320;
    static constexpr std::uint32_t kHeightPx = 240;

    void StartBoth(const VxSimulatorFaults& faults, const IndependentReceiver::SetUp& setUp = {})
    {
        VxSimulatorOptions options;
        // Mono8, 54 packets a frame: small enough for that receiver's buffer when it does not run for a
        // while.
        options.widthPx = kWidthPx;
        options.heightPx = kHeightPx;
        options.frameRateHz = m_framesPerSecond;
        options.faults = faults;
        const VxResult started = m_camera.Start(options);
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
        m_receiver.Start(setUp);
    }
    int CompleteFrames()
    {
        int complete = 0;
        for (int i = 0; i < kFrames && !HasFatalFailure(); ++i)
            complete += m_receiver.NextIsComplete() ? 1 : 0;
        return complete;
    }

    double m_framesPerSecond = 25;
    VxSimulatedCamera m_camera;
    IndependentReceiver m_receiver; // ends first: it gives the camera back
};

TEST_F(AravisReceiverTest, EveryPixelArrives)
{
    StartBoth({});

    EXPECT_GE(CompleteFrames(), kWholeFrames);
}

TEST_F(AravisReceiverTest, EveryPixelArrivesWhenPacketsAreLostAndAskedForAgain)
{
    StartBoth({.dropShare = 0.02}); // those sent again included

    EXPECT_GE(CompleteFrames(), kWholeFrames);
    EXPECT_GT(m_camera.Counters().packetsDropped, 20u); // 43 on average
    EXPECT_GT(m_receiver.Counted("n_resent_packets"), 20u);
    EXPECT_GT(m_camera.Counters().packetsResent, 20u);
}

TEST_F(AravisReceiverTest, FramesThatCannotBeMadeWholeAreNotComplete)
{
    using std::chrono::milliseconds;
    StartBoth({.dropShare = 0.05, .resendMemory = milliseconds(0)}); // it can send nothing again

    EXPECT_LT(CompleteFrames(), kFrames / 2);
    EXPECT_EQ(m_camera.Counters().packetsResent, 0u);
}

/// Whether the camera sends chunks behind an image, and whether its ids are the extended ones.
class AravisChunksTest : public AravisReceiverTest,
                         public testing::WithParamInterface<std::tuple<bool, bool>> {
protected:
    void StartBothWithChunks(const VxSimulatorFaults& faults)
    {
        const auto [isBehindImage, isExtended] = GetParam();
        StartBoth(faults, [=](ArvCamera& camera) {
            g_autoptr(GError) error = nullptr;
            arv_camera_set_boolean(&camera, "GevSCCFGExtendedChunkData", isBehindImage, &error);
            ASSERT_EQ(error, nullptr) << error->message;
            arv_camera_set_string(&camera, "GevGVSPExtendedIDMode", isExtended ? "On" : "Off", &error);
            ASSERT_EQ(error, nullptr) << error->message;
            arv_camera_set_chunks(&camera, "FrameID,Timestamp", &error);
            ASSERT_EQ(error, nullptr) << error->message;
        });
        m_receiver.BePatient();
    }

    /// The picture is the first chunk, and the values are those that leader and header tell.
    void ExpectChunks(ArvBuffer& buffer) const
    {
        ASSERT_TRUE(arv_buffer_has_chunks(&buffer));
        std::size_t bytes = 0;
        const void* const picture = arv_buffer_get_chunk_data(&buffer, 1, &bytes);
        ASSERT_NE(picture, nullptr);
        constexpr std::uint32_t kMono8 = 0x01080001;
        IndependentReceiver::ExpectPicture({static_cast<const std::byte*>(picture), bytes}, kWidthPx,
                                           kHeightPx, kMono8);
        EXPECT_EQ(static_cast<guint64>(m_receiver.ChunkValue(buffer, "ChunkFrameID")), // positive
                  arv_buffer_get_frame_id(&buffer));
        EXPECT_EQ(static_cast<guint64>(m_receiver.ChunkValue(buffer, "ChunkTimestamp")), // positive
                  arv_buffer_get_timestamp(&buffer));
    }
    int CompleteFramesWithChunks(int frames)
    {
        int complete = 0;
        for (int i = 0; i < frames && !HasFatalFailure(); ++i)
            complete +=
                m_receiver.NextIsComplete([this](ArvBuffer& buffer) { ExpectChunks(buffer); }) ? 1 : 0;
        return complete;
    }
};

TEST_P(AravisChunksTest, PictureAndValuesArriveAsChunks)
{
    constexpr int kSomeFrames = 20;
    StartBothWithChunks({});

    EXPECT_EQ(CompleteFramesWithChunks(kSomeFrames), kSomeFrames);
}

TEST_P(AravisChunksTest, PictureAndValuesArriveAsChunksWhenPacketsAreLostAndAskedForAgain)
{
    constexpr int kSomeFrames = 8;
    m_framesPerSecond = 5; // the camera keeps four; chosen: a busy machine has stood still for half a second
    StartBothWithChunks({.dropShare = 0.05}); // those sent again included

    EXPECT_EQ(CompleteFramesWithChunks(kSomeFrames), kSomeFrames);
    EXPECT_GT(m_camera.Counters().packetsDropped, 8u); // 22 on average
    EXPECT_GT(m_camera.Counters().packetsResent, 8u);
}

INSTANTIATE_TEST_SUITE_P(Ways, AravisChunksTest, testing::Combine(testing::Bool(), testing::Bool()),
                         [](const auto& each) {
                             return std::string(std::get<0>(each.param) ? "BehindAnImage" : "AsThePayload") +
                                    (std::get<1>(each.param) ? "ExtendedIds" : "StandardIds");
                         });

} // namespace
