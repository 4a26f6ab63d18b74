#include "VxDSSource/camera/VxPipeline.h"

#include "VxBase/VxClock.h"
#include "VxCamera/surface/VxStreamImpl.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/camera/VxStream.h"
#include "unit/VxCamera/receive/QueueSocket.h"
#include "unit/VxCamera/receive/StreamPackets.h"

#include "support/Latch.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

using receive::StreamPackets;

constexpr transport::Ipv4Endpoint kCamera{transport::Ipv4Address(192, 168, 1, 20), 50000};
constexpr std::uint32_t kPictureBytes = 64 * 48;
constexpr std::uint32_t kForEverMs = 3'600'000; // a test that waits so long has failed

/// A stream whose packets a test puts into its socket.
class FedStream final : public VxStream {
public:
    FedStream() : VxStream(std::make_unique<VxStreamImpl>()) {}
    VxResult Open(const VxString&) override
    {
        auto owned = std::make_unique<receive::QueueSocket>();
        socket = owned.get();
        return Impl().Attach(
            std::make_unique<receive::StreamReceiver>(std::move(owned), m_clock, kCamera.address));
    }
    [[nodiscard]] VxStreamType GetType() const override { return VxStreamType::Gev; }

    void Put(const StreamPackets& packets, std::uint64_t blockId)
    {
        for (auto& packet : packets.Block(blockId))
            socket->Put(kCamera, std::move(packet));
    }

    receive::QueueSocket* socket = nullptr; // borrowed from the receiver

private:
    VxSteadyClock m_clock;
};

class VxPipelineTest : public testing::Test {
protected:
    VxPipelineTest() { EXPECT_TRUE(m_stream.Open("camera").IsOK()); }

    void Start(std::uint32_t count = 4, std::uint32_t bytes = kPictureBytes)
    {
        ASSERT_TRUE(m_pipeline.SetBufferCount(count).IsOK());
        m_pipeline.SetBufferSize(bytes);
        const VxResult started = m_pipeline.Start();
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
    }
    VxBuffer* Next()
    {
        VxBuffer* buffer = nullptr;
        EXPECT_TRUE(m_pipeline.RetrieveNextBuffer(&buffer, kForEverMs).IsOK());
        return buffer;
    }
    /// Whether the picture is that of the block, byte for byte.
    static bool IsPictureOf(const VxBuffer& buffer, std::uint64_t blockId)
    {
        const VxImage* const image = buffer.GetImage();
        if (image == nullptr || image->GetSize() != kPictureBytes)
            return false;
        for (std::size_t i = 0; i < kPictureBytes; ++i) {
            if (std::byte{image->GetDataPointer()[i]} != StreamPackets::ByteAt(blockId, i))
                return false;
        }
        return true;
    }
    std::int64_t Statistic(const char* name)
    {
        std::int64_t value = -1;
        EXPECT_TRUE(m_stream.GetParameters()->GetIntegerValue(name, value).IsOK());
        return value;
    }

    StreamPackets m_packets;
    FedStream m_stream;
    VxPipeline m_pipeline{&m_stream};
};

TEST_F(VxPipelineTest, HandsOutBlocksInOrder)
{
    Start();
    for (std::uint64_t id = 1; id <= 3; ++id)
        m_stream.Put(m_packets, id);

    for (std::uint64_t id = 1; id <= 3; ++id) {
        VxBuffer* const buffer = Next();
        ASSERT_NE(buffer, nullptr);
        EXPECT_TRUE(buffer->GetOperationResult().IsOK());
        EXPECT_EQ(buffer->GetBlockID(), id);
        EXPECT_EQ(buffer->GetTimestamp(), 4711u);
        EXPECT_EQ(buffer->GetImage()->GetWidth(), 64u);
        EXPECT_EQ(buffer->GetImage()->GetHeight(), 48u);
        EXPECT_TRUE(IsPictureOf(*buffer, id));
        EXPECT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());
    }
}

TEST_F(VxPipelineTest, GivesTheOperationResultWhereAskedFor)
{
    Start();
    m_packets.leader.start.payloadType = {gvsp::PayloadType::kJpeg};
    m_stream.Put(m_packets, 1);

    VxBuffer* buffer = nullptr;
    VxResult operation;
    ASSERT_TRUE(m_pipeline.RetrieveNextBuffer(&buffer, kForEverMs, &operation).IsOK());

    EXPECT_EQ(operation.Code(), VxError::NotAnImage);
    EXPECT_EQ(buffer->GetPayloadType(), VxPayloadType::Other);
    EXPECT_EQ(buffer->GetImage(), nullptr);
}

TEST_F(VxPipelineTest, NothingThereIsATimeout)
{
    Start();
    VxBuffer* buffer = reinterpret_cast<VxBuffer*>(&m_pipeline);

    EXPECT_EQ(m_pipeline.RetrieveNextBuffer(&buffer, 0).Code(), VxError::Timeout);

    EXPECT_EQ(buffer, nullptr);
}

TEST_F(VxPipelineTest, WithoutAStartNothingCanBeRetrieved)
{
    VxBuffer* buffer = nullptr;

    EXPECT_EQ(m_pipeline.RetrieveNextBuffer(&buffer, kForEverMs).Code(), VxError::NotStarted);
    EXPECT_FALSE(m_pipeline.IsStarted());
    EXPECT_TRUE(m_pipeline.Stop().IsOK());
}

TEST_F(VxPipelineTest, AClosedStreamCannotBeStarted)
{
    ASSERT_TRUE(m_stream.Close().IsOK());

    EXPECT_EQ(m_pipeline.Start().Code(), VxError::NotOpen);
    EXPECT_FALSE(m_pipeline.IsStarted());
}

TEST_F(VxPipelineTest, ASecondPipelineOnARunningStreamIsRefused)
{
    Start();
    VxPipeline second(&m_stream);

    EXPECT_EQ(second.Start().Code(), VxError::Busy);
    EXPECT_TRUE(second.Stop().IsOK());

    m_stream.Put(m_packets, 1);
    EXPECT_TRUE(IsPictureOf(*Next(), 1)); // the first one goes on
}

TEST_F(VxPipelineTest, StartingTwiceChangesNothing)
{
    Start();
    EXPECT_TRUE(m_pipeline.Start().IsOK());

    m_stream.Put(m_packets, 1);
    EXPECT_TRUE(IsPictureOf(*Next(), 1));
}

TEST_F(VxPipelineTest, StopWakesAConsumer)
{
    Start();
    Latch isThere(1);
    VxResult result;
    std::thread consumer([&] {
        VxBuffer* buffer = nullptr;
        isThere.count_down();
        result = m_pipeline.RetrieveNextBuffer(&buffer, kForEverMs);
    });

    isThere.wait();
    EXPECT_TRUE(m_pipeline.Stop().IsOK());
    consumer.join();

    // The consumer may come to its wait only after the stop.
    EXPECT_TRUE(result.Code() == VxError::Aborted || result.Code() == VxError::NotStarted);
}

TEST_F(VxPipelineTest, StopEmptiesTheQueue)
{
    Start();
    m_stream.Put(m_packets, 1);
    m_stream.Put(m_packets, 2);
    VxBuffer* const first = Next();
    ASSERT_TRUE(m_pipeline.ReleaseBuffer(first).IsOK());

    ASSERT_TRUE(m_pipeline.Stop().IsOK());
    EXPECT_EQ(m_pipeline.GetOutputQueueSize(), 0u);
    Start();
    m_stream.Put(m_packets, 7);

    EXPECT_EQ(Next()->GetBlockID(), 7u);
}

TEST_F(VxPipelineTest, ABufferHandedOutSurvivesStopAndStart)
{
    Start(2);
    m_stream.Put(m_packets, 1);
    VxBuffer* const held = Next();

    ASSERT_TRUE(m_pipeline.Stop().IsOK());
    Start(2);
    for (std::uint64_t id = 2; id <= 6; ++id) {
        m_stream.Put(m_packets, id);
        VxBuffer* const next = Next();
        EXPECT_NE(next, held);
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(next).IsOK());
    }

    EXPECT_TRUE(IsPictureOf(*held, 1));
    EXPECT_TRUE(m_pipeline.ReleaseBuffer(held).IsOK());
}

TEST_F(VxPipelineTest, ABufferCanBeReleasedWhileStopped)
{
    Start();
    m_stream.Put(m_packets, 1);
    VxBuffer* const held = Next();
    ASSERT_TRUE(m_pipeline.Stop().IsOK());

    EXPECT_TRUE(IsPictureOf(*held, 1));
    EXPECT_TRUE(m_pipeline.ReleaseBuffer(held).IsOK());
    EXPECT_EQ(m_pipeline.ReleaseBuffer(held).Code(), VxError::InvalidParameter);
}

TEST_F(VxPipelineTest, OnlyBuffersHandedOutCanBeReleased)
{
    VxBuffer foreign(VxPayloadType::Image);

    EXPECT_EQ(m_pipeline.ReleaseBuffer(&foreign).Code(), VxError::InvalidParameter);
    EXPECT_EQ(m_pipeline.ReleaseBuffer(nullptr).Code(), VxError::InvalidParameter);
}

TEST_F(VxPipelineTest, WithAllBuffersOutTheNewestBlocksAreDropped)
{
    Start(1);
    m_stream.Put(m_packets, 1);
    VxBuffer* const held = Next();
    m_stream.Put(m_packets, 2);
    m_stream.Put(m_packets, 3);
    while (Statistic("PipelineBlocksDropped") < 2) // the receiver's thread is at it
        std::this_thread::yield();

    ASSERT_TRUE(m_pipeline.ReleaseBuffer(held).IsOK());
    m_stream.Put(m_packets, 4);

    EXPECT_TRUE(IsPictureOf(*Next(), 4));
    EXPECT_EQ(Statistic("BlocksDropped"), 0);
}

TEST_F(VxPipelineTest, CountsTheBlocksThatWait)
{
    Start();
    for (std::uint64_t id = 1; id <= 3; ++id)
        m_stream.Put(m_packets, id);
    while (m_pipeline.GetOutputQueueSize() < 3) // the receiver's thread is at it
        std::this_thread::yield();

    std::ignore = Next();

    EXPECT_EQ(m_pipeline.GetOutputQueueSize(), 2u);
}

TEST_F(VxPipelineTest, ABufferThatIsTooSmallTellsSo)
{
    Start(2, kPictureBytes - 1);
    m_stream.Put(m_packets, 1);

    VxBuffer* const buffer = Next();

    EXPECT_EQ(buffer->GetOperationResult().Code(), VxError::BufferTooSmall);
    EXPECT_NE(buffer->GetOperationResult().GetDescription().Narrow().find("3072"), std::string::npos);
}

TEST_F(VxPipelineTest, BuffersGrowWhenToldTo)
{
    m_pipeline.SetHandleBufferTooSmall(true);
    Start(2, 0);
    for (std::uint64_t id = 1; id <= 4; ++id) {
        m_stream.Put(m_packets, id);
        VxBuffer* const buffer = Next();
        EXPECT_TRUE(id == 1 || IsPictureOf(*buffer, id)) << id; // at most one is lost
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());
    }
}

TEST_F(VxPipelineTest, NoBufferGrowsToWhatNoCameraSends)
{
    m_pipeline.SetHandleBufferTooSmall(true);
    Start(1);
    m_packets.leader = StreamPackets::Mono8(100'000, 100'000); // a leader that lies
    m_stream.Put(m_packets, 1);

    EXPECT_EQ(Next()->GetOperationResult().Code(), VxError::BufferTooSmall);
}

TEST_F(VxPipelineTest, NoBuffersCountAsOneAndFarTooManyAreRefused)
{
    EXPECT_TRUE(m_pipeline.SetBufferCount(0).IsOK());
    EXPECT_EQ(m_pipeline.SetBufferCount(0xFFFFFFFF).Code(), VxError::InvalidParameter);

    Start(0);
    m_stream.Put(m_packets, 1);
    EXPECT_TRUE(IsPictureOf(*Next(), 1));
}

TEST_F(VxPipelineTest, AStreamThatClosesUnderItEndsReceptionOnly)
{
    Start();
    ASSERT_TRUE(m_stream.Close().IsOK());
    VxBuffer* buffer = nullptr;

    EXPECT_EQ(m_pipeline.RetrieveNextBuffer(&buffer, 0).Code(), VxError::Timeout);
    EXPECT_TRUE(m_pipeline.Stop().IsOK());
}

} // namespace
