#include "VxCamera/surface/StreamStatistics.h"

#include "PipelineFixture.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenEnumEntry.h"
#include "VxDSSource/camera/VxGenFloat.h"
#include "VxDSSource/camera/VxGenInteger.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenTypes.h"

#include "support/network/FakeClock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iterator>
#include <set>
#include <string>

namespace {

using namespace std::chrono_literals;
using Type = VxGenType;
using StreamStatisticsTest = PipelineFixture;

enum class Access : bool { ReadOnly, Writable };

/// What a user sees of a parameter.
struct Row {
    const char* name;
    const char* category;
    VxGenType type;
    const char* unit; ///< "" = a number without one, or no number
    VxGenVisibility visibility;
    Access access;
};

// How the stream does and where it comes from is for everybody; why it does not, and what can be tuned, for
// who knows of packets; what only a faulty camera makes, for who looks for its fault.
constexpr Row kParameters[] = {
    Row{"AcquisitionRate", "root\\Statistics", Type::Float, "FPS", VxGenVisibility::Beginner,
        Access::ReadOnly},
    Row{"Bandwidth", "root\\Statistics", Type::Float, "bit/s", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"BlockCount", "root\\Statistics", Type::Integer, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"BlocksDropped", "root\\Statistics", Type::Integer, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"PipelineBlocksDropped", "root\\Statistics", Type::Integer, "", VxGenVisibility::Beginner,
        Access::ReadOnly},
    Row{"ErrorCount", "root\\Statistics", Type::Integer, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"PacketCount", "root\\Statistics", Type::Integer, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"PacketsMissing", "root\\Statistics", Type::Integer, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"BlocksIncomplete", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"BlocksBufferTooSmall", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert,
        Access::ReadOnly},
    Row{"BlocksNotAnImage", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"BlocksDamaged", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"PacketsRequestedAgain", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert,
        Access::ReadOnly},
    Row{"PacketsRecovered", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"PacketsRefused", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"PacketsDuplicate", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"PacketsForeign", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"PacketsLate", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"ResendRequests", "root\\Statistics", Type::Integer, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"PacketsOutOfRange", "root\\Statistics", Type::Integer, "", VxGenVisibility::Guru, Access::ReadOnly},
    Row{"PacketsWrongSize", "root\\Statistics", Type::Integer, "", VxGenVisibility::Guru, Access::ReadOnly},
    Row{"PacketsMalformed", "root\\Statistics", Type::Integer, "", VxGenVisibility::Guru, Access::ReadOnly},
    Row{"PacketsUnsupported", "root\\Statistics", Type::Integer, "", VxGenVisibility::Guru, Access::ReadOnly},
    Row{"PacketsErrorStatus", "root\\Statistics", Type::Integer, "", VxGenVisibility::Guru, Access::ReadOnly},
    Row{"PacketsUnbuffered", "root\\Statistics", Type::Integer, "", VxGenVisibility::Guru, Access::ReadOnly},
    Row{"PacketsTest", "root\\Statistics", Type::Integer, "", VxGenVisibility::Guru, Access::ReadOnly},
    Row{"Latency", "root\\Statistics", Type::Integer, "us", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"LatencyMax", "root\\Statistics", Type::Integer, "us", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"LastError", "root\\Statistics", Type::Enum, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"LastErrorDescription", "root\\Statistics", Type::String, "", VxGenVisibility::Beginner,
        Access::ReadOnly},
    Row{"Reset", "root\\Statistics", Type::Command, "", VxGenVisibility::Beginner, Access::Writable},
    Row{"ResendEnabled", "root\\Resend", Type::Boolean, "", VxGenVisibility::Expert, Access::Writable},
    Row{"ResendPossible", "root\\Resend", Type::Boolean, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"ResendGapTimeout", "root\\Resend", Type::Integer, "us", VxGenVisibility::Expert, Access::Writable},
    Row{"ResendAnswerTimeout", "root\\Resend", Type::Integer, "us", VxGenVisibility::Expert,
        Access::Writable},
    Row{"ResendTimeout", "root\\Resend", Type::Integer, "ms", VxGenVisibility::Expert, Access::Writable},
    Row{"BlockTimeout", "root\\Receiver", Type::Integer, "ms", VxGenVisibility::Expert, Access::Writable},
    Row{"CameraIPAddress", "root\\Receiver", Type::String, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"CameraIPAddressSource", "root\\Receiver", Type::Enum, "", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"LocalIPAddress", "root\\Receiver", Type::String, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"LocalPort", "root\\Receiver", Type::Integer, "", VxGenVisibility::Beginner, Access::ReadOnly},
    Row{"SocketBufferSize", "root\\Receiver", Type::Integer, "B", VxGenVisibility::Expert, Access::ReadOnly},
    Row{"PacketRingUsed", "root\\Receiver", Type::Boolean, "", VxGenVisibility::Expert, Access::ReadOnly},
};

std::string UnitOf(VxGenParameter& parameter)
{
    VxString unit;
    if (auto* const integer = dynamic_cast<VxGenInteger*>(&parameter)) {
        EXPECT_TRUE(integer->GetUnit(unit).IsOK());
    } else if (auto* const number = dynamic_cast<VxGenFloat*>(&parameter)) {
        EXPECT_TRUE(number->GetUnit(unit).IsOK());
    }
    return unit.Narrow();
}

/// The names that an enumeration can show.
std::set<std::string> EntriesOf(const VxGenEnum& parameter)
{
    std::set<std::string> names;
    std::int64_t count = 0;
    EXPECT_TRUE(parameter.GetEntriesCount(count).IsOK());
    for (std::int64_t i = 0; i < count; ++i) {
        const VxGenEnumEntry* entry = nullptr;
        VxString name;
        EXPECT_TRUE(parameter.GetEntryByIndex(i, &entry).IsOK());
        EXPECT_TRUE(entry->GetName(name).IsOK());
        names.insert(name.Narrow());
    }
    return names;
}

TEST_F(StreamStatisticsTest, EveryParameterHasItsCategoryTypeUnitVisibilityAndAccess)
{
    VxGenParameterArray& parameters = *m_stream.GetParameters();
    for (const Row& row : kParameters) {
        VxGenParameter* const parameter = parameters.Get(VxString(row.name));
        ASSERT_NE(parameter, nullptr) << row.name;
        VxGenType type = VxGenType::Unknown;
        VxGenVisibility visibility = VxGenVisibility::Invisible;
        EXPECT_TRUE(parameter->GetType(type).IsOK()) << row.name;
        EXPECT_TRUE(parameter->GetVisibility(visibility).IsOK()) << row.name;
        EXPECT_EQ(parameter->GetCategory(), row.category) << row.name;
        EXPECT_EQ(type, row.type) << row.name;
        EXPECT_EQ(UnitOf(*parameter), row.unit) << row.name;
        EXPECT_EQ(visibility, row.visibility) << row.name;
        EXPECT_EQ(parameter->IsWritable(), row.access == Access::Writable) << row.name;
        EXPECT_TRUE(parameter->IsAvailable()) << row.name;
    }
    EXPECT_EQ(parameters.GetCount(), std::size(kParameters)) << "one is not in the table";
}

TEST_F(StreamStatisticsTest, WhatCannotBeWrittenIsRefused)
{
    VxGenParameterArray& parameters = *m_stream.GetParameters();
    for (const Row& row : kParameters) {
        if (row.access == Access::Writable)
            continue;
        VxGenParameter& parameter = *parameters.Get(VxString(row.name));
        VxString text;
        ASSERT_TRUE(parameter.ToString(text).IsOK()) << row.name;
        EXPECT_EQ(parameter.FromString(text).Code(), VxError::NotWritable) << row.name;
    }
}

TEST_F(StreamStatisticsTest, LatencyIsFromABlocksFirstPacketToItsDelivery)
{
    FakeClock clock;
    FedStream stream(clock);
    ASSERT_TRUE(stream.Open("camera").IsOK());
    VxPipeline pipeline(&stream);
    pipeline.SetBufferSize(kPictureBytes);
    ASSERT_TRUE(pipeline.Start().IsOK());
    const auto receiveIn = [&](std::uint64_t blockId, std::chrono::microseconds duration) {
        auto packets = m_packets.Block(blockId);
        auto last = std::move(packets.back());
        packets.pop_back();
        for (auto& packet : packets)
            stream.socket->Put(kCamera, std::move(packet));
        stream.socket->WaitUntilIdle();
        clock.Advance(duration);
        stream.socket->Put(kCamera, std::move(last));
        VxBuffer* buffer = nullptr;
        ASSERT_TRUE(pipeline.RetrieveNextBuffer(&buffer, kForEverMs).IsOK());
        ASSERT_TRUE(pipeline.ReleaseBuffer(buffer).IsOK());
    };
    const auto value = [&](const char* name) {
        std::int64_t number = -1;
        EXPECT_TRUE(stream.GetParameters()->GetIntegerValue(name, number).IsOK());
        return number;
    };
    EXPECT_EQ(value("Latency"), 0);

    receiveIn(1, 3ms);
    EXPECT_EQ(value("Latency"), 3000);
    EXPECT_EQ(value("LatencyMax"), 3000);
    clock.Advance(40ms); // between two blocks: of neither
    receiveIn(2, 1500us);
    EXPECT_EQ(value("Latency"), 1500);
    EXPECT_EQ(value("LatencyMax"), 3000);

    EXPECT_TRUE(stream.GetParameters()->ExecuteCommand("Reset").IsOK());
    EXPECT_EQ(value("Latency"), 0);
    EXPECT_EQ(value("LatencyMax"), 0);
    EXPECT_TRUE(pipeline.Stop().IsOK());
}

TEST_F(StreamStatisticsTest, EveryCodeOfABlockAndOfTheReceiverCanBeTheLastError)
{
    const auto names = EntriesOf(*m_stream.GetParameters()->GetEnum("LastError"));

    for (const VxError code :
         {VxError::Ok, VxError::MissingPackets, VxError::BufferTooSmall, VxError::NotAnImage,
          VxError::NotSupported, VxError::CameraError, VxError::InvalidData, VxError::Timeout,
          VxError::NetworkError, VxError::OutOfMemory})
        EXPECT_TRUE(names.contains(std::string(VxErrorName(code)))) << VxErrorName(code);
}

TEST_F(StreamStatisticsTest, ABlockWhoseLinesRunTogetherSaysSoAndWhatHelps)
{
    Start();
    m_packets.leader = receive::StreamPackets::Mono8(11, 10);
    // YCbCr422_10p, of which nobody says where such a line would begin: 220 bits a line, 28 bytes when it is
    // rounded up.
    m_packets.leader.pixelFormat = 0x02140087;
    m_packets.payloadBytes = 11 * 10 * 20 / 8;
    m_stream.Put(m_packets, 1);
    EXPECT_EQ(Next()->GetOperationResult().Code(), VxError::NotSupported);

    VxString error;
    VxString description;
    EXPECT_TRUE(m_stream.GetParameters()->GetEnumValue("LastError", error).IsOK());
    EXPECT_EQ(error, "NOT_SUPPORTED");
    EXPECT_TRUE(m_stream.GetParameters()->Get("LastErrorDescription")->ToString(description).IsOK());
    EXPECT_NE(description.Narrow().find("another width or pixel format helps"), std::string::npos)
        << description.Narrow();
}

TEST_F(StreamStatisticsTest, ASilenceTellsOfPacketsThatComeFromAnotherAddressThanTheCameras)
{
    constexpr transport::Ipv4Endpoint kOtherAddress{transport::Ipv4Address(192, 168, 1, 66), 50000};
    FakeClock clock;
    FedStream stream(clock);
    ASSERT_TRUE(stream.Open("192.168.1.20").IsOK());
    VxPipeline pipeline(&stream);
    pipeline.SetBufferSize(kPictureBytes);
    ASSERT_TRUE(pipeline.Start().IsOK());
    const auto saidAfter = [&](std::chrono::milliseconds duration) {
        stream.socket->WaitUntilIdle();
        clock.Advance(duration);
        stream.socket->Wake(); // the queue has no time: the receiver looks at its clock
        stream.socket->WaitUntilIdle();
        VxString text;
        EXPECT_TRUE(stream.GetParameters()->Get("LastErrorDescription")->ToString(text).IsOK());
        return text.Narrow();
    };
    EXPECT_EQ(saidAfter(999ms), "");
    EXPECT_EQ(saidAfter(1ms).rfind("no packet arrived", 0), 0u);

    stream.socket->Put(kOtherAddress, m_packets.Leader(1));
    const std::string said = saidAfter(0ms);
    for (const char* part : {"another address", "PacketsForeign", "Open the stream again"})
        EXPECT_NE(said.find(part), std::string::npos) << said;

    stream.socket->Put(kCamera, m_packets.Leader(1));
    EXPECT_EQ(saidAfter(1000ms).rfind("no packet arrived", 0), 0u);
    EXPECT_TRUE(pipeline.Stop().IsOK());
}

TEST_F(StreamStatisticsTest, AParameterTellsWhetherPacketsComeFromAPacketRing)
{
    const auto used = [](VxStream& stream) {
        VxString text;
        EXPECT_TRUE(stream.GetParameters()->Get("PacketRingUsed")->ToString(text).IsOK());
        return text;
    };
    EXPECT_EQ(used(m_stream), "false");
    m_stream.socket->SetBacklogNear(true);
    EXPECT_EQ(used(m_stream), "true");
    m_stream.socket->SetBacklogNear(false); // as when it turns out that the ring gets nothing
    EXPECT_EQ(used(m_stream), "false");
    m_stream.socket->SetBacklogNear(true);
    FedStream closed;
    EXPECT_EQ(used(closed), "false");
}

TEST_F(StreamStatisticsTest, ResendAndItsTimeoutsCanBeSetAlsoBeforeTheStreamIsOpen)
{
    FedStream stream;
    VxGenParameterArray& parameters = *stream.GetParameters();
    EXPECT_TRUE(parameters.Get("ResendEnabled")->FromString("false").IsOK());
    EXPECT_TRUE(parameters.SetIntegerValue("ResendGapTimeout", 700).IsOK());
    EXPECT_EQ(parameters.SetIntegerValue("ResendGapTimeout", -1).Code(), VxError::OutOfRange);
    EXPECT_TRUE(parameters.SetIntegerValue("BlockTimeout", 80).IsOK());

    ASSERT_TRUE(stream.Open("camera").IsOK());

    VxString isOn;
    std::int64_t value = 0;
    EXPECT_TRUE(parameters.Get("ResendEnabled")->ToString(isOn).IsOK());
    EXPECT_EQ(isOn, "false");
    EXPECT_TRUE(parameters.GetIntegerValue("ResendGapTimeout", value).IsOK());
    EXPECT_EQ(value, 700);
    EXPECT_TRUE(parameters.GetIntegerValue("BlockTimeout", value).IsOK());
    EXPECT_EQ(value, 80);
}

} // namespace
