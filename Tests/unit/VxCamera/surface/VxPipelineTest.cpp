#include "VxDSSource/camera/VxPipeline.h"

#include "PipelineFixture.h"
#include "VxCamera/surface/StreamLinks.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/camera/VxStream.h"
#include "unit/VxCamera/pixel/AllocationCount.h"

#include "support/Bytes.h"
#include "support/Latch.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace {

class VxPipelineTest : public PipelineFixture {};

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
    EXPECT_EQ(operation.GetDescription(),
              "block 1 carries JPEG (payload type 0x00000006) and no picture that could be found");
    EXPECT_EQ(buffer->GetPayloadType(), VxPayloadType::Other);
    EXPECT_EQ(buffer->GetImage(), nullptr);
}

TEST_F(VxPipelineTest, ThePictureOfChunkDataIsWhatTheHolderOfTheLinkSays)
{
    const auto link = std::make_shared<const receive::StreamLink>();
    const auto another = std::make_shared<const receive::StreamLink>();
    const auto putBlock = [this](const std::string& id) {
        for (const char* rest :
             {"01 000000 | 0000 0004 00000000 00000007", "03 000001 | 0102030405060708 | 00000001 00000008",
              "02 000002 | 0000 0004 00000010"})
            m_stream.socket->Put(kCamera, bytes::FromHex("0000" + id + rest));
    };
    StreamLinks::Connect(m_stream.socket->LocalEndpoint(), link);
    Start();
    m_stream.socket->WaitUntilIdle();

    StreamLinks::TellPicture(link, receive::PictureShape{0x01080001, 4, 2});
    StreamLinks::TellPicture(another, receive::PictureShape{0x01080001, 2, 2});
    putBlock("0001");
    VxBuffer* const shown = Next();
    StreamLinks::Disconnect(link);
    putBlock("0002");
    VxBuffer* const later = Next();

    EXPECT_TRUE(shown->GetOperationResult().IsOK()) << shown->GetOperationResult().GetDescription().Narrow();
    ASSERT_NE(shown->GetImage(), nullptr);
    EXPECT_EQ(shown->GetImage()->GetWidth(), 4u);
    EXPECT_EQ(shown->GetImage()->GetDataPointer()[7], 8);
    EXPECT_EQ(later->GetOperationResult().Code(), VxError::NotAnImage);
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

TEST_F(VxPipelineTest, AllBuffersTogetherGrowToABoundOnly)
{
    m_pipeline.SetHandleBufferTooSmall(true);
    Start(4);
    StreamPackets lies = m_packets;
    lies.leader = StreamPackets::Mono8(30'000, 30'000); // 0.9 GB
    for (std::uint64_t id = 1; id <= 4; ++id)
        m_stream.socket->Put(kCamera, lies.Leader(id)); // all open at the same time
    m_stream.Put(m_packets, 5);
    for (std::uint64_t id = 1; id <= 2; ++id) {
        VxBuffer* const buffer = Next();
        EXPECT_EQ(buffer->GetOperationResult().Code(), VxError::MissingPackets) << id;
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());
    }
    for (std::uint64_t id = 3; id <= 4; ++id) {
        VxBuffer* const buffer = Next();
        EXPECT_EQ(buffer->GetOperationResult().Code(), VxError::BufferTooSmall) << id;
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());
    }
}

TEST_F(VxPipelineTest, MemoryOfBuffersThatGrewIsGivenBackForOthers)
{
    m_pipeline.SetHandleBufferTooSmall(true);
    Start(4);
    StreamPackets lies = m_packets;
    lies.leader = StreamPackets::Mono8(30'000, 30'000); // 0.9 GB
    m_stream.socket->Put(kCamera, lies.Leader(1));
    m_stream.socket->Put(kCamera, lies.Leader(2)); // both open at the same time
    m_stream.Put(m_packets, 3);
    for (std::uint64_t id = 1; id <= 3; ++id)
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(Next()).IsOK());

    lies.leader.heightPx = 31'000; // fits into none of them
    m_stream.socket->Put(kCamera, lies.Leader(4));
    m_stream.Put(m_packets, 5);

    EXPECT_EQ(Next()->GetOperationResult().Code(), VxError::MissingPackets) << "it had a buffer";
}

TEST_F(VxPipelineTest, ABufferWhoseGrowthWasTakenBackHasWhatStartGaveIt)
{
    constexpr std::uint64_t kBuffers = 4;
    m_pipeline.SetHandleBufferTooSmall(true);
    Start(kBuffers);
    StreamPackets lies = m_packets;
    lies.leader = StreamPackets::Mono8(30'000, 30'000); // 0.9 GB
    m_stream.socket->Put(kCamera, lies.Leader(1));
    m_stream.socket->Put(kCamera, lies.Leader(2)); // both open at the same time
    m_stream.Put(m_packets, 3);
    lies.leader.heightPx = 31'000; // fits into none of them
    for (std::uint64_t id = 1; id <= 3; ++id)
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(Next()).IsOK());
    m_stream.socket->Put(kCamera, lies.Leader(4));
    m_stream.Put(m_packets, 5);
    for (std::uint64_t id = 4; id <= 5; ++id)
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(Next()).IsOK());

    m_pipeline.SetHandleBufferTooSmall(false);
    for (std::uint64_t id = 6; id < 6 + kBuffers; ++id) { // each buffer once
        m_stream.Put(m_packets, id);
        VxBuffer* const buffer = Next();
        ASSERT_NE(buffer, nullptr);
        EXPECT_TRUE(IsPictureOf(*buffer, id)) << id;
    }
}

TEST_F(VxPipelineTest, LargeBuffersOfAnEarlierStartDoNotCountAsGrown)
{
    constexpr std::uint32_t kManyBytes = 900'000'000; // three of them are more than buffers may grow
    Start(3, kManyBytes);
    for (std::uint64_t id = 1; id <= 3; ++id) {
        m_stream.Put(m_packets, id);
        ASSERT_NE(Next(), nullptr); // held
    }
    ASSERT_TRUE(m_pipeline.Stop().IsOK());
    m_pipeline.SetHandleBufferTooSmall(true);
    Start(1, kPictureBytes - 1);
    m_stream.Put(m_packets, 4);

    EXPECT_TRUE(IsPictureOf(*Next(), 4));
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

TEST_F(VxPipelineTest, NoMemoryIsTakenFrameAfterFrame)
{
    constexpr std::uint64_t kBatch = 50;
    constexpr std::uint64_t kFrames = 100'000;
    m_packets.leader = StreamPackets::Mono8(8, 8);
    m_packets.payloadBytes = 64;
    m_packets.stepBytes = 64;
    Start(kBatch + 10, 64);

    std::size_t taken = 0;
    std::uint64_t id = 0;
    std::uint64_t complete = 0;
    for (std::uint64_t frame = 0; frame < kFrames; frame += kBatch) {
        m_stream.socket->Hold(true); // the packets themselves take memory
        for (std::uint64_t i = 0; i < kBatch; ++i) {
            id = id == UINT16_MAX ? 1 : id + 1;
            m_stream.Put(m_packets, id);
        }
        const std::size_t before = AllocationCount();
        m_stream.socket->Hold(false);
        for (std::uint64_t i = 0; i < kBatch; ++i) {
            VxBuffer* buffer = nullptr;
            if (!m_pipeline.RetrieveNextBuffer(&buffer, kForEverMs).IsOK())
                continue;
            complete += buffer->GetOperationResult().IsOK() ? 1 : 0;
            std::ignore = m_pipeline.ReleaseBuffer(buffer);
        }
        if (frame >= kFrames / 10) // everything has grown to its size by then
            taken += AllocationCount() - before;
    }

    EXPECT_EQ(complete, kFrames);
    EXPECT_EQ(taken, 0u);
}

TEST_F(VxPipelineTest, IncompleteFramesTakeNoMemoryEither)
{
    constexpr std::uint64_t kBlocks = 50;
    Start(kBlocks + 10);
    std::size_t taken = 0;
    for (std::uint64_t round = 0; round < 10; ++round) {
        m_stream.socket->Hold(true);
        for (std::uint64_t i = 1; i <= kBlocks; ++i) {
            auto packets = m_packets.Block(round * kBlocks + i);
            if (i != kBlocks)
                packets.erase(packets.begin() + 3);
            for (auto& packet : packets)
                m_stream.socket->Put(kCamera, std::move(packet));
        }
        const std::size_t before = AllocationCount();
        m_stream.socket->Hold(false);
        for (std::uint64_t i = 0; i < kBlocks; ++i) {
            VxBuffer* buffer = nullptr;
            if (m_pipeline.RetrieveNextBuffer(&buffer, kForEverMs).IsOK())
                std::ignore = m_pipeline.ReleaseBuffer(buffer);
        }
        if (round >= 3) // everything has grown to its size by then
            taken += AllocationCount() - before;
    }

    EXPECT_EQ(Statistic("BlocksIncomplete"), 10 * 49);
    EXPECT_EQ(taken, 0u);
}

TEST_F(VxPipelineTest, AnIncompleteBlockTellsHowManyPacketsAreMissing)
{
    Start();
    auto packets = m_packets.Block(1);
    packets.erase(packets.begin() + 2, packets.begin() + 5);
    for (auto& packet : packets)
        m_stream.socket->Put(kCamera, std::move(packet));
    m_stream.Put(m_packets, 2);

    const VxResult result = Next()->GetOperationResult();

    EXPECT_EQ(result.GetCodeString(), "MISSING_PACKETS");
    EXPECT_NE(result.GetDescription().Narrow().find("3 packets are missing"), std::string::npos);
}

TEST_F(VxPipelineTest, AConsumerThatTakesOtherMemoryForAPictureGetsTheNextBlocksWhole)
{
    Start(1);
    m_stream.Put(m_packets, 1);
    VxBuffer* buffer = Next();
    ASSERT_TRUE(buffer->GetImage()->Alloc(640, 480, m_packets.leader.pixelFormat, 0, 0, 0).IsOK());
    ASSERT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());

    m_stream.Put(m_packets, 2);
    buffer = Next();
    EXPECT_TRUE(IsPictureOf(*buffer, 2));
    std::vector<std::uint8_t> foreign(kPictureBytes, 99);
    ASSERT_TRUE(buffer->GetImage()->Attach(foreign, 64, 48, m_packets.leader.pixelFormat, 0, 0, 0).IsOK());
    ASSERT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());

    m_stream.Put(m_packets, 3);
    EXPECT_TRUE(IsPictureOf(*Next(), 3));
    EXPECT_EQ(foreign, std::vector<std::uint8_t>(kPictureBytes, 99));
}

TEST_F(VxPipelineTest, AStreamThatWasOpenedAnewUnderItIsStartedAnew)
{
    Start(2);
    m_stream.Put(m_packets, 1);
    VxBuffer* const held = Next();
    m_stream.Put(m_packets, 2);
    while (m_pipeline.GetOutputQueueSize() == 0)
        std::this_thread::yield(); // the receiver's thread is at it
    EXPECT_TRUE(m_pipeline.IsStarted());

    ASSERT_TRUE(m_stream.Close().IsOK());
    EXPECT_FALSE(m_pipeline.IsStarted());
    EXPECT_EQ(m_pipeline.Start().Code(), VxError::NotOpen);
    ASSERT_TRUE(m_stream.Open("camera").IsOK());
    EXPECT_FALSE(m_pipeline.IsStarted());
    ASSERT_TRUE(m_pipeline.Start().IsOK());

    EXPECT_TRUE(m_pipeline.IsStarted());
    for (std::uint64_t id = 7; id <= 9; ++id) {
        m_stream.Put(m_packets, id);
        VxBuffer* const next = Next();
        EXPECT_TRUE(IsPictureOf(*next, id)) << "not what waited before";
        ASSERT_TRUE(m_pipeline.ReleaseBuffer(next).IsOK());
    }
    EXPECT_TRUE(IsPictureOf(*held, 1));
    EXPECT_TRUE(m_pipeline.ReleaseBuffer(held).IsOK());
}

TEST_F(VxPipelineTest, AnotherPipelineTakesTheStreamThatWasOpenedAnew)
{
    Start();
    ASSERT_TRUE(m_stream.Close().IsOK());
    ASSERT_TRUE(m_stream.Open("camera").IsOK());
    VxPipeline other(&m_stream);
    ASSERT_TRUE(other.Start().IsOK());

    EXPECT_EQ(m_pipeline.Start().Code(), VxError::Busy);

    EXPECT_FALSE(m_pipeline.IsStarted());
    EXPECT_TRUE(other.IsStarted());
}

} // namespace
