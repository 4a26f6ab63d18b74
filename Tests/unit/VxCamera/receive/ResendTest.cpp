#include "VxCamera/receive/BlockAssembler.h"

#include "AskingFixture.h"
#include "FakeSink.h"
#include "LossyCamera.h"
#include "StreamPackets.h"

#include <gtest/gtest.h>

#include <algorithm>

// The whole of resend against a camera in a time of its own.

namespace receive {
namespace {

using namespace std::chrono_literals;

/// Keeps what was delivered, but not the pictures.
class CheckingSink final : public IBlockSink {
public:
    explicit CheckingSink(std::size_t bytes) : m_bytes(bytes) {}

    BlockBuffer* TakeFree(std::size_t) override
    {
        if (m_free.empty()) {
            m_memory.push_back(std::make_unique<std::byte[]>(m_bytes));
            m_buffers.push_back({{m_memory.back().get(), m_bytes}, {}});
            return &m_buffers.back();
        }
        BlockBuffer* const buffer = m_free.back();
        m_free.pop_back();
        return buffer;
    }
    void Deliver(BlockBuffer& buffer) override
    {
        EXPECT_GT(buffer.info.blockId, lastId) << "out of order";
        lastId = buffer.info.blockId;
        longest = std::max(longest, buffer.info.took);
        codes.push_back(buffer.info.code);
        const bool isWhole = buffer.info.code == VxError::Ok;
        for (std::size_t i = 0; isWhole && i < buffer.info.receivedBytes; i += 61) // a sample of each packet
            ASSERT_EQ(buffer.memory[i], StreamPackets::ByteAt(lastId, i)) << lastId;
        m_free.push_back(&buffer);
    }
    void GiveBack(BlockBuffer& buffer) override { m_free.push_back(&buffer); }

    [[nodiscard]] std::size_t Complete() const
    {
        return static_cast<std::size_t>(std::ranges::count(codes, VxError::Ok)); // not negative
    }

    std::vector<VxError> codes;
    std::uint64_t lastId = 0;
    IVxClock::Time::duration longest{};

private:
    const std::size_t m_bytes;
    std::vector<std::unique_ptr<std::byte[]>> m_memory;
    std::deque<BlockBuffer> m_buffers; // borrowed by everybody, so never moved
    std::vector<BlockBuffer*> m_free;
};

class ResendTest : public testing::Test {
protected:
    /// A full-HD picture in packets of 1,500 bytes has about as many packets.
    static constexpr std::uint32_t kLines = 1417;

    /// One packet for each line.
    static StreamPackets Lines(std::uint32_t count)
    {
        StreamPackets stream;
        stream.leader = StreamPackets::Mono8(64, count);
        stream.payloadBytes = std::size_t{64} * count;
        stream.stepBytes = 64;
        return stream;
    }

    void Stream(std::uint64_t frames) { m_camera.Stream(frames, m_assembler); }

    CheckingSink m_sink{std::size_t{64} * kLines};
    StreamCounters m_counters;
    LossyCamera m_camera{{}, Lines(kLines)};
    BlockAssembler m_assembler{{}, m_sink, m_counters, &m_camera};
};

TEST_F(ResendTest, NothingIsAskedForWhileNothingIsMissing)
{
    Stream(50);

    EXPECT_EQ(m_sink.Complete(), 50u);
    EXPECT_EQ(m_camera.requests, 0u);
}

TEST_F(ResendTest, EveryFrameIsCompleteWithOneInAHundredPacketsLost)
{
    m_camera.Change().dropShare = 0.01;
    Stream(100);

    EXPECT_EQ(m_sink.Complete(), 100u);
    EXPECT_EQ(m_counters.packetsMissing.Value(), 0u);
    EXPECT_GT(m_counters.packetsRecovered.Value(), 1000u);
    // Hardly more is asked for than was lost.
    EXPECT_LT(m_camera.packetsAskedFor, m_camera.packetsLost * 11 / 10);
}

TEST_F(ResendTest, EveryFrameIsCompleteWithFiveInAHundredLostAndAShortMemory)
{
    m_camera.Change().dropShare = 0.05;
    m_camera.Change().keeps = 40ms;
    Stream(150);

    EXPECT_EQ(m_sink.Complete(), 150u);
    EXPECT_LT(m_sink.longest, 45ms); // a frame takes 11 ms
}

TEST_F(ResendTest, FramesThatFollowEachOtherWithoutAPauseAreComplete)
{
    m_camera.Change().dropShare = 0.05;
    m_camera.Change().framePeriod = 11'400us; // 1,419 packets of 8 us
    Stream(60);

    EXPECT_EQ(m_sink.Complete(), 60u);
}

TEST_F(ResendTest, ACameraThatPausesItsAnswersLosesNoFrame)
{
    LossyCamera camera({.dropShare = 0.05, .framePeriod = 50ms}, Lines(210));
    BlockAssembler assembler({}, m_sink, m_counters, &camera);
    camera.Stream(20, assembler); // from these it knows how fast the camera answers
    camera.Change().silentEvery = 130ms;
    camera.Change().silence = 60ms; // which is for more than a frame

    camera.Stream(500, assembler);

    EXPECT_EQ(m_sink.Complete(), 520u);
    EXPECT_EQ(assembler.Resend().BudgetScale(), 1.0);
    EXPECT_LT(camera.packetsAskedFor, camera.packetsLost * 3 / 2);
}

TEST_F(ResendTest, TheFirstBlockWithChunksHasTheBudgetOfItsPictureThoughItsEndIsNotKnown)
{
    StreamPackets stream = Lines(400);
    stream.leader.start.payloadType = {0x4001};
    LossyCamera camera({.dropShare = 0.15}, stream);
    BlockAssembler assembler({}, m_sink, m_counters, &camera);

    camera.Stream(2, assembler);

    EXPECT_GT(camera.packetsLost, 2u * 40); // a block of which no more is known may ask for 32
    EXPECT_EQ(m_sink.Complete(), 2u);
}

TEST_F(ResendTest, ASlowAnswerIsLearntAndNotAskedForTwice)
{
    m_camera.Change().dropShare = 0.01;
    m_camera.Change().roundTrip = 12ms;
    Stream(100);

    EXPECT_EQ(m_sink.Complete(), 100u);
    EXPECT_LT(m_camera.packetsAskedFor, m_camera.packetsLost * 12 / 10);
}

TEST_F(ResendTest, APauseInABlockLosesNothingAndNothingIsAskedForIt)
{
    for (const std::uint32_t pausesBefore : {1u, 200u, 700u}) { // more is left than may be asked for
        BlockAssembler assembler({}, m_sink, m_counters, &m_camera);
        m_camera.Change().pausesBefore = pausesBefore;
        m_camera.Change().pause = 0ms;
        m_camera.Stream(3, assembler); // from these it knows how long a block is, but of no pause
        m_sink.codes.clear();
        m_camera.Change().pause = 15ms; // of the sender, or of this computer

        m_camera.Stream(3, assembler);

        EXPECT_EQ(m_sink.Complete(), 3u) << pausesBefore;
        EXPECT_EQ(m_camera.requests, 0u) << pausesBefore;
    }
}

TEST_F(ResendTest, PacketsLostBeforeAPauseAreAskedForAllTheSame)
{
    m_camera.Change().dropShare = 0.01;
    m_camera.Change().pausesBefore = 700;
    m_camera.Change().pause = 15ms;

    Stream(100);

    EXPECT_EQ(m_sink.Complete(), 100u);
    EXPECT_LT(m_camera.packetsAskedFor, m_camera.packetsLost * 11 / 10);
}

TEST_F(ResendTest, APauseThatIsLongerThanThePatienceOfRequestsLosesNothing)
{
    LossyCamera camera({}, Lines(40)); // so few that some packets may be asked for twice and no more
    camera.Change().framePeriod = 200ms;
    camera.Change().answers = false; // who pauses does not answer either
    BlockAssembler assembler({}, m_sink, m_counters, &camera);
    camera.Stream(3, assembler);
    camera.Change().pausesBefore = 28;
    camera.Change().pause = 100ms;

    camera.Stream(1, assembler);

    EXPECT_GT(camera.requests, 0u);
    EXPECT_EQ(m_sink.Complete(), 4u);
}

TEST_F(ResendTest, SmallFramesAreCompleteToo)
{
    LossyCamera camera({.dropShare = 0.05}, Lines(5));
    BlockAssembler assembler({}, m_sink, m_counters, &camera);

    camera.Stream(2000, assembler);

    // Of a frame of which not one packet arrives nobody knows: 1 in 20^7.
    EXPECT_EQ(m_sink.Complete(), 2000u);
}

TEST_F(ResendTest, ACameraThatDoesNotOfferItIsNotAsked)
{
    m_camera.Change().dropShare = 0.01;
    m_camera.Change().resends = false;
    Stream(50);

    EXPECT_EQ(m_camera.requests, 0u);
    EXPECT_LT(m_sink.Complete(), 5u);
    EXPECT_GT(m_counters.packetsMissing.Value(), 0u);
}

TEST_F(ResendTest, NothingIsAskedForWhenItIsSwitchedOff)
{
    m_camera.Change().dropShare = 0.01;
    AssemblySettings settings;
    settings.resend.isOn = false;
    m_assembler.SetSettings(settings);
    Stream(20);

    EXPECT_EQ(m_camera.requests, 0u);
    EXPECT_GT(m_counters.blocksIncomplete.Value(), 0u);
}

TEST_F(ResendTest, ACameraThatDoesNotAnswerIsAskedLessAndLess)
{
    m_camera.Change().dropShare = 0.01;
    m_camera.Change().answers = false;
    Stream(30);
    const std::uint64_t inTheFirstSecond = m_camera.packetsAskedFor;
    EXPECT_LT(inTheFirstSecond, m_camera.packetsLost * 3 / 2);
    EXPECT_LT(m_sink.longest, 270ms); // blocks are given up 250 ms behind their last packet
    m_sink.longest = {};
    Stream(120);
    const std::uint64_t before = m_camera.packetsAskedFor;
    Stream(30);
    const std::uint64_t inTheLastSecond = m_camera.packetsAskedFor - before;

    EXPECT_GT(inTheFirstSecond, 0u);
    EXPECT_LE(inTheLastSecond, 30u * (kLines / 4 / 64)); // a 64th of a quarter of the packets
    EXPECT_GT(inTheLastSecond, 0u);                      // it may answer again
    EXPECT_EQ(m_sink.codes.size(), 180u);
    EXPECT_LT(m_sink.longest, 50ms) << "a camera that has never answered is waited for";
}

TEST_F(ResendTest, ACameraThatAnswersAgainIsAskedAgain)
{
    m_camera.Change().dropShare = 0.01;
    m_camera.Change().answers = false;
    Stream(100);
    m_camera.Change().answers = true;
    Stream(200); // to learn it
    const std::size_t before = m_sink.Complete();
    Stream(50);

    EXPECT_EQ(m_sink.Complete() - before, 50u);
}

TEST_F(ResendTest, ABlockWhosePacketsAreRefusedIsGivenUpAtOnce)
{
    m_camera.Change().dropShare = 0.01;
    m_camera.Change().keeps = 0us; // nothing can be sent again
    Stream(50);

    EXPECT_GT(m_counters.packetsRefused.Value(), 0u);
    EXPECT_EQ(m_sink.codes.size(), 50u);
    EXPECT_LT(m_sink.longest, 20ms); // a frame takes 11 ms
}

TEST_F(ResendTest, ANetworkThatLosesHalfIsNotMadeWorse)
{
    m_camera.Change().dropShare = 0.5;
    Stream(50);

    EXPECT_EQ(m_sink.codes.size(), 50u);
    EXPECT_LT(m_camera.packetsAskedFor, 50u * kLines / 4);
}

TEST_F(ResendTest, OneHourOfStreamingLosesNothing)
{
    StreamPackets stream = Lines(2);
    stream.idMode = gvsp::IdMode::Extended; // the sink counts on: no wrap
    LossyCamera camera({.dropShare = 0.001, .framePeriod = 40ms}, stream);
    BlockAssembler assembler({}, m_sink, m_counters, &camera);

    camera.Stream(3600 * 25, assembler);

    EXPECT_EQ(m_sink.Complete(), 3600u * 25);
    EXPECT_EQ(m_counters.packetsLate.Value(), 0u);
}

/// A block without its second packet, which the camera is asked for and does not send.
class UnansweredRequestTest : public testing::Test, protected AskingFixture {
protected:
    void SendWithoutSecond(std::uint64_t blockId)
    {
        auto packets = m_stream.Block(blockId);
        packets.erase(packets.begin() + 2);
        SendAll(packets);
    }
    /// @param status  of a packet that carries nothing else
    void Answer(std::uint16_t status, std::uint32_t packetId)
    {
        auto packet = m_stream.Header(1, gvsp::PacketFormat::Payload, packetId);
        packet[0] = static_cast<std::byte>(status >> 8);
        packet[1] = static_cast<std::byte>(status & 0xFF);
        Send(packet);
    }

    StreamPackets m_stream;
};

TEST_F(UnansweredRequestTest, ACameraThatAsksForPatienceIsAskedAgainSoon)
{
    SendWithoutSecond(1);
    for (int i = 0; i < 5; ++i)
        Wait(20ms);
    ASSERT_EQ(Asked(), Ranges{}); // nothing was answered: that is asked more and more slowly

    Answer(0x8010, 2); // not yet available
    EXPECT_EQ(Asked(), (Ranges{{2, 2}}));
}

TEST_F(UnansweredRequestTest, AnotherAcquisitionBeginsWithoutAPause)
{
    SendWithoutSecond(1);
    for (int i = 0; i < 4; ++i)
        Wait(20ms);
    m_assembler.Abort();

    SendWithoutSecond(1);
    Wait(1ms);
    EXPECT_EQ(Asked(), (Ranges{{2, 2}})); // again
}

TEST_F(UnansweredRequestTest, ARefusalOfAllPacketsBeforeOneGivesTheBlockUpAtOnce)
{
    SendWithoutSecond(1);
    Wait(2ms);
    Answer(0x800C, 4); // this one is here
    Wait(0ms);
    EXPECT_TRUE(m_sink.delivered.empty());

    Answer(0x8011, 4);
    Wait(0ms);
    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(LastCode(), VxError::MissingPackets);
}

TEST_F(UnansweredRequestTest, ACameraThatHasNeverAnsweredIsNotWaitedForThoughNoBlockFollows)
{
    SendWithoutSecond(1);
    for (int i = 0; i < 30; ++i)
        Wait(20ms);
    ASSERT_EQ(m_sink.delivered.size(), 1u);

    SendWithoutSecond(2);
    Wait(1ms);
    Wait(4ms);
    EXPECT_EQ(m_sink.delivered.size(), 1u);
    Wait(1ms);
    EXPECT_EQ(m_sink.delivered.size(), 2u);
}

TEST_F(UnansweredRequestTest, AnswersThatComeTooLateEndTheJudgementThatNoneCome)
{
    const StreamPackets::Packet late = m_stream.Payload(1, 2);
    auto refusal = late;
    refusal[0] = std::byte{0x80}; // status 0x800C: unavailable
    refusal[1] = std::byte{0x0C};
    std::uint64_t id = 0;
    for (const StreamPackets::Packet& answer : {late, refusal}) {
        SendWithoutSecond(++id);
        for (int i = 0; i < 30; ++i)
            Wait(20ms);
        Send(answer);

        SendWithoutSecond(++id);
        Wait(1ms);
        Wait(5ms);
        EXPECT_EQ(m_sink.delivered.size(), id - 1) << "it is not waited for";
        Wait(1s);
    }
}

} // namespace
} // namespace receive
