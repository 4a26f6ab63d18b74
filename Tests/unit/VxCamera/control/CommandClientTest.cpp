#include "VxCamera/control/CommandClient.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/PendingAck.h"
#include "support/Bytes.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

namespace control {
namespace {

using namespace std::chrono_literals;
using gvcp::Command;

constexpr std::uint32_t kAddress = 0x1000; // of a register that means nothing

class CommandClientTest : public testing::Test {
protected:
    CommandClientTest()
    {
        m_camera.controller = m_client.Local();
        m_camera.lastCommandOfController = m_clock.Now();
    }

    std::unique_ptr<transport::IUdpSocket> Open()
    {
        transport::UdpSocketOptions options;
        options.local.address = transport::Ipv4Address(192, 168, 1, 1);
        return std::move(*m_sockets.OpenUdp(options));
    }
    std::chrono::milliseconds Elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.Now() - m_start);
    }

    FakeClock m_clock;
    IVxClock::Time m_start = m_clock.Now();
    FakeCamera m_camera{m_clock};
    std::vector<bytes::Vector> m_sent;
    FakeSocketFactory m_sockets{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                                const transport::Ipv4Endpoint& destination) {
                                    m_sent.push_back(bytes::Copy(datagram));
                                    m_camera.OnDatagram(socket, datagram, destination);
                                }};
    CommandClient m_client{Open(), m_camera.endpoint, m_clock};
};

TEST_F(CommandClientTest, ReadsARegisterWithTheBytesOfTheProtocol)
{
    const auto value = m_client.ReadRegister(0x0A00);

    EXPECT_TRUE(value);
    EXPECT_EQ(m_sent, (std::vector<bytes::Vector>{bytes::FromHex("42 01 00 80 00 04 00 01 00 00 0A 00")}));
}

TEST_F(CommandClientTest, WritesARegisterWithTheBytesOfTheProtocol)
{
    ASSERT_TRUE(m_client.WriteRegister(0x0A00, 2).IsOK());

    EXPECT_EQ(m_sent, (std::vector<bytes::Vector>{
                          bytes::FromHex("42 01 00 82 00 08 00 01 00 00 0A 00 00 00 00 02")}));
}

TEST_F(CommandClientTest, ALostCommandIsSentAgainWithTheSameBytes)
{
    m_camera.dropCommands = 2;

    ASSERT_TRUE(m_client.ReadRegister(kAddress));

    ASSERT_EQ(m_sent.size(), 3u);
    EXPECT_EQ(m_sent[1], m_sent[0]);
    EXPECT_EQ(m_sent[2], m_sent[0]);
}

TEST_F(CommandClientTest, ALostAnswerLeadsToTheSameRequestId)
{
    m_camera.dropAnswers = 1;

    ASSERT_TRUE(m_client.WriteRegister(kAddress, 7).IsOK());

    ASSERT_EQ(m_camera.seen.size(), 2u);
    EXPECT_EQ(m_camera.seen[0].requestId, m_camera.seen[1].requestId);
}

TEST_F(CommandClientTest, RequestIdsNeverRepeatAndAreNeverZero)
{
    constexpr int kCommands = 0x10000 + 2;
    for (int i = 0; i < kCommands; ++i)
        ASSERT_TRUE(m_client.ReadRegister(kAddress));

    for (int i = 0; i < kCommands; ++i)
        ASSERT_NE(m_camera.seen[static_cast<std::size_t>(i)].requestId, 0) << i;
    EXPECT_EQ(m_camera.seen[0xFFFE].requestId, 0xFFFF);
    EXPECT_EQ(m_camera.seen[0xFFFF].requestId, 1);
}

TEST_F(CommandClientTest, ACameraThatIsGoneIsATimeoutThatNamesIt)
{
    m_camera.isGone = true;

    const auto value = m_client.ReadRegister(0xABCD1230);

    ASSERT_FALSE(value);
    EXPECT_EQ(value.Error().Code(), VxError::Timeout);
    EXPECT_EQ(value.Error().GetDescription().Narrow(),
              "camera 192.168.1.20, read register 0xABCD1230: no answer to 4 tries of 200 ms; check its "
              "power, its cable and this machine's firewall");
    EXPECT_EQ(Elapsed(), 800ms);
    EXPECT_EQ(m_sent.size(), 4u);
}

TEST_F(CommandClientTest, AfterSilenceTheNextCommandsFindOutQuickly)
{
    m_camera.isGone = true;
    std::ignore = m_client.ReadRegister(kAddress);
    m_start = m_clock.Now();

    EXPECT_EQ(m_client.WriteRegister(kAddress, 1).Code(), VxError::Timeout);

    EXPECT_EQ(Elapsed(), 100ms);
}

TEST_F(CommandClientTest, ACameraThatComesBackGetsItsFullPatienceAgain)
{
    m_camera.isGone = true;
    std::ignore = m_client.ReadRegister(kAddress);
    m_camera.isGone = false;
    ASSERT_TRUE(m_client.ReadRegister(kAddress));
    m_camera.dropCommands = 3;

    EXPECT_TRUE(m_client.ReadRegister(kAddress));
}

TEST_F(CommandClientTest, SettingsChangeTimeoutAndRetries)
{
    m_camera.isGone = true;
    m_client.UpdateSettings([](CommandSettings& settings) { settings = {50ms, 1}; });

    EXPECT_EQ(m_client.WriteRegister(kAddress, 1).Code(), VxError::Timeout);

    EXPECT_EQ(Elapsed(), 100ms);
    EXPECT_EQ(m_sent.size(), 2u);
}

TEST_F(CommandClientTest, WaitsAsLongAsPendingAsksAndSendsOnce)
{
    m_camera.pendingMs = {2000, 1500};

    EXPECT_TRUE(m_client.WriteRegister(kAddress, 1).IsOK());

    EXPECT_EQ(Elapsed(), 3500ms);
    EXPECT_EQ(m_camera.Count(Command::WriteReg), 1u);
}

TEST_F(CommandClientTest, ABusyCameraIsAskedAgain)
{
    m_camera.busy = 3;
    m_camera.SetRegister(kAddress, 77);

    EXPECT_EQ(m_client.ReadRegister(kAddress).ValueOr(0), 77u);
}

TEST_F(CommandClientTest, ACameraThatStaysBusyIsGivenUp)
{
    m_camera.busy = 1000;

    EXPECT_EQ(m_client.ReadRegister(kAddress).Result().Code(), VxError::Busy);

    EXPECT_LT(Elapsed(), 2s);
}

TEST_F(CommandClientTest, ErrorStatusesHaveCodesOfTheirOwnAndAreNamed)
{
    const std::map<gvcp::Status, VxError> codes{{gvcp::Status::AccessDenied, VxError::AccessDenied},
                                                {gvcp::Status::WriteProtect, VxError::NotWritable},
                                                {gvcp::Status::NotImplemented, VxError::NotSupported},
                                                {gvcp::Status::InvalidAddress, VxError::CameraError},
                                                {gvcp::Status{0x8ABC}, VxError::CameraError}};
    for (const auto& [status, code] : codes) {
        m_camera.refused[kAddress] = status;

        const auto written = m_client.WriteRegister(kAddress, 1);

        EXPECT_EQ(written.Code(), code);
        EXPECT_EQ(written.GetDescription().Narrow(),
                  "camera 192.168.1.20, write register 0x00001000: the camera refuses: " +
                      gvcp::StatusText(status));
    }
}

TEST_F(CommandClientTest, ReadsMemoryOfAnyAddressAndLength)
{
    std::string text(3000, '\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>(i * 7); // any pattern; the low byte is enough
    m_camera.SetMemory(0x2000, text);

    for (const std::size_t skip : {0u, 1u, 2u, 3u}) {
        for (const std::size_t size : {1u, 3u, 4u, 511u, 512u, 513u, 2000u}) {
            std::string read(size, '\0');
            const auto address = static_cast<std::uint32_t>(0x2000 + skip); // 0 to 3 more
            ASSERT_TRUE(m_client.ReadMemory(address, std::as_writable_bytes(std::span(read))).IsOK());
            EXPECT_EQ(read, text.substr(skip, size)) << skip << ' ' << size;
        }
    }
    for (const FakeCamera::Seen& command : m_camera.seen)
        EXPECT_LE(command.bytes, 512u);
}

TEST_F(CommandClientTest, WritesMemoryOfAnyAddressAndLengthAndNothingElse)
{
    for (const std::size_t skip : {0u, 1u, 2u, 3u}) {
        for (const std::size_t size : {1u, 3u, 4u, 511u, 513u, 1030u}) {
            std::ranges::fill(m_camera.memory, std::byte{0xEE});
            const std::string text(size, 'w');
            const auto address = static_cast<std::uint32_t>(0x2000 + skip); // 0 to 3 more

            ASSERT_TRUE(m_client.WriteMemory(address, std::as_bytes(std::span(text))).IsOK());

            EXPECT_EQ(std::ranges::count(m_camera.memory, std::byte{'w'}), static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(m_camera.memory[address], std::byte{'w'});
            EXPECT_EQ(m_camera.memory[address + size - 1], std::byte{'w'});
        }
    }
}

TEST_F(CommandClientTest, WithoutWriteMemoryRegistersAreWritten)
{
    m_client.SetWriteMemorySupported(false);

    ASSERT_TRUE(m_client.WriteMemory(kAddress, std::as_bytes(std::span("eight by", 8))).IsOK());

    EXPECT_EQ(m_camera.Count(Command::WriteMem), 0u);
    EXPECT_EQ(m_camera.Count(Command::WriteReg), 2u);
    EXPECT_EQ(m_camera.Register(kAddress), 0x65696768u);
    EXPECT_EQ(m_camera.Register(kAddress + 4), 0x74206279u);
}

TEST_F(CommandClientTest, MemoryBeyondThirtyTwoBitsIsRefusedWithoutACommand)
{
    std::array<std::byte, 8> memory{};

    EXPECT_EQ(m_client.ReadMemory(0xFFFFFFFC, memory).Code(), VxError::InvalidParameter);
    EXPECT_EQ(m_client.WriteMemory(0xFFFFFFFC, memory).Code(), VxError::InvalidParameter);

    EXPECT_TRUE(m_sent.empty());
}

TEST_F(CommandClientTest, AnAnswerOfAnotherAddressIsNotTaken)
{
    // The camera's own answer comes first; this one, of the right id and code, only tells another address.
    CommandClient client(std::move(*FakeSocketFactory(m_clock,
                                                      [&](FakeUdpSocket& socket, std::span<const std::byte>,
                                                          const transport::Ipv4Endpoint& destination) {
                                                          socket.Arrive(destination,
                                                                        bytes::FromHex("0000 0085 0008 0001 "
                                                                                       "00002000 01020304"),
                                                                        1us);
                                                      })
                                        .OpenUdp({})),
                         m_camera.endpoint, m_clock);
    std::array<std::byte, 4> memory{};

    const auto read = client.ReadMemory(0x1000, memory);

    EXPECT_EQ(read.Code(), VxError::InvalidData);
}

TEST_F(CommandClientTest, AnEndedClientFailsAtOnceWithTheReason)
{
    m_client.End({VxError::LinkLost, "the camera is gone"});
    m_client.End({VxError::NotConnected, "too late"});

    EXPECT_EQ(m_client.ReadRegister(kAddress).Result().Code(), VxError::LinkLost);
    EXPECT_EQ(m_client.WriteRegister(kAddress, 1).GetDescription(), "the camera is gone");

    EXPECT_TRUE(m_sent.empty());
    EXPECT_EQ(Elapsed(), 0ms);
}

TEST_F(CommandClientTest, EndingInterruptsTheCommandUnderWay)
{
    CommandClient* ending = nullptr;
    FakeSocketFactory sockets(
        m_clock, [&](FakeUdpSocket&, std::span<const std::byte>, const transport::Ipv4Endpoint&) {
            ending->End(
                {VxError::NotConnected, "closed"}); // as another thread would, while the answer is awaited
        });
    CommandClient client(std::move(*sockets.OpenUdp({})), m_camera.endpoint, m_clock);
    ending = &client;

    EXPECT_EQ(client.ReadRegister(kAddress).Result().Code(), VxError::NotConnected);

    EXPECT_EQ(Elapsed(), 0ms);
}

TEST_F(CommandClientTest, ASystemThatRefusesToSendIsANetworkError)
{
    m_sockets.lastSocket->FailSending({VxError::NetworkError, "network is unreachable"});

    EXPECT_EQ(m_client.WriteRegister(kAddress, 1).Code(), VxError::NetworkError);
}

TEST_F(CommandClientTest, EveryAnswerIsALifeSign)
{
    m_clock.Advance(10s);
    m_camera.refused[kAddress] = gvcp::Status::AccessDenied;

    std::ignore = m_client.ReadRegister(kAddress);

    EXPECT_EQ(m_client.LastAnswer(), m_clock.Now());
}

TEST_F(CommandClientTest, WhatIsNoAnswerToUsIsNoLifeSign)
{
    const auto before = m_client.LastAnswer();
    m_camera.isGone = true;
    m_sockets.lastSocket->Arrive(m_camera.endpoint, bytes::FromHex("0000 0081 0004 7777 00000002"), 1ms);
    m_sockets.lastSocket->Arrive(m_camera.endpoint, bytes::FromHex("FFFF"), 2ms);

    EXPECT_EQ(m_client.ReadRegister(kAddress).Result().Code(), VxError::Timeout);

    EXPECT_EQ(m_client.LastAnswer(), before);
}

TEST_F(CommandClientTest, AskingForPatienceIsALifeSign)
{
    m_camera.dropAnswers = 1;
    m_client.UpdateSettings([](CommandSettings& settings) { settings = {200ms, 0}; });
    m_clock.Advance(10s);
    // The id of the client's first command.
    m_sockets.lastSocket->Arrive(m_camera.endpoint, bytes::FromHex("0000 0089 0004 0001 0000 0064"), 1ms);

    EXPECT_EQ(m_client.ReadRegister(kAddress).Result().Code(), VxError::Timeout);

    EXPECT_EQ(m_client.LastAnswer(), m_start + 10s + 1ms);
    EXPECT_EQ(m_clock.Now() - m_client.LastAnswer(), 300ms);
}

TEST_F(CommandClientTest, BusyAndPendingTogetherHoldACommandForAMinuteAtMost)
{
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint&) {
        const std::uint16_t id = gvcp::ParseCommand(datagram)->header.requestId;
        socket.Arrive(m_camera.endpoint, gvcp::MakePendingAck(id, {9000ms}).Bytes(), 1ms);
        socket.Arrive(m_camera.endpoint,
                      gvcp::MakeEmptyAck(gvcp::Status::Busy, gvcp::Ack::ReadReg, id).Bytes(), 9000ms);
    });
    CommandClient client(std::move(*sockets.OpenUdp({})), m_camera.endpoint, m_clock);

    EXPECT_FALSE(client.ReadRegister(kAddress));

    EXPECT_LE(Elapsed(), 61s);
    EXPECT_GE(Elapsed(), 50s);
}

TEST_F(CommandClientTest, AnEndThatIsSetMeanwhileEndsTheCommandUnderWay)
{
    CommandClient* ending = nullptr;
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint&) {
        const std::uint16_t id = gvcp::ParseCommand(datagram)->header.requestId;
        socket.Arrive(m_camera.endpoint, gvcp::MakePendingAck(id, {9000ms}).Bytes(), 1ms);
        ending->EndAt(m_clock.Now() + 2s, {VxError::NotConnected, "closed"}); // as another thread would
    });
    CommandClient client(std::move(*sockets.OpenUdp({})), m_camera.endpoint, m_clock);
    ending = &client;

    EXPECT_EQ(client.ReadRegister(kAddress).Result().Code(), VxError::NotConnected);
    EXPECT_EQ(Elapsed(), 2s);
    EXPECT_EQ(client.WriteRegister(kAddress, 1).GetDescription(), "closed");
    EXPECT_EQ(Elapsed(), 2s);
}

TEST_F(CommandClientTest, UntilTheEndThatIsSetCommandsWork)
{
    m_client.EndAt(m_clock.Now() + 2s, {VxError::NotConnected, "closed"});

    EXPECT_TRUE(m_client.WriteRegister(kAddress, 1).IsOK());
    EXPECT_TRUE(m_client.EndReason().IsOK());
}

TEST_F(CommandClientTest, MemoryThatIsWrittenInPartOnlyIsAnError)
{
    m_camera.writtenBytes = 4;

    const auto written = m_client.WriteMemory(kAddress, std::as_bytes(std::span("eight by", 8)));

    EXPECT_EQ(written.Code(), VxError::CameraError);
    EXPECT_EQ(written.GetDescription().Narrow(),
              "camera 192.168.1.20, write memory 0x00001000: the camera wrote only 4 of 8 bytes");
}

constexpr std::size_t kLargeRegister = 16 * 1024 * 1024;

TEST_F(CommandClientTest, ALargeRegisterThatComesTooSlowlyIsGivenUp)
{
    m_camera.memory.resize(kLargeRegister);
    m_camera.delay = 190ms; // just below the time-out of a command
    std::vector<std::byte> bytes(kLargeRegister);

    const auto read = m_client.ReadMemory(0, bytes);

    EXPECT_EQ(read.Code(), VxError::Timeout);
    // 53 blocks of 512 bytes take 10.07 s.
    EXPECT_TRUE(read.GetDescription().Narrow().starts_with("camera 192.168.1.20, read memory 0x00006A00: "))
        << read.GetDescription().Narrow();
    EXPECT_LT(Elapsed(), 11s);
}

TEST_F(CommandClientTest, ALargeRegisterThatIsTakenTooSlowlyIsGivenUp)
{
    for (const bool canWriteMemory : {true, false}) {
        m_start = m_clock.Now();
        m_client.SetWriteMemorySupported(canWriteMemory);
        m_camera.memory.resize(kLargeRegister);
        m_camera.delay = 190ms;
        m_camera.lastCommandOfController = m_clock.Now();
        const std::vector<std::byte> bytes(kLargeRegister);

        const auto written = m_client.WriteMemory(0x10000, std::span(bytes).first(bytes.size() / 2));

        EXPECT_EQ(written.Code(), VxError::Timeout) << written.GetDescription().Narrow();
        EXPECT_LT(Elapsed(), 11s) << canWriteMemory;
    }
}

TEST_F(CommandClientTest, ALargeRegisterOfAQuickCameraIsReadWhole)
{
    m_camera.memory.resize(kLargeRegister);
    m_camera.memory.back() = std::byte{7};
    m_camera.delay = 200us;
    std::vector<std::byte> bytes(kLargeRegister);

    const auto read = m_client.ReadMemory(0, bytes);

    ASSERT_TRUE(read.IsOK()) << read.GetDescription().Narrow();
    EXPECT_EQ(bytes.back(), std::byte{7});
}

TEST_F(CommandClientTest, ALimitEndsTheCommandUnderWayAndThoseAfterItUntilItIsLifted)
{
    {
        const CommandLimit limit(m_client, m_clock.Now() + 3s);
        m_camera.pendingMs = {9000};
        EXPECT_EQ(m_client.ReadRegister(kAddress).Result().Code(), VxError::Timeout);
        EXPECT_EQ(Elapsed(), 3s);
        EXPECT_EQ(m_client.ReadRegister(kAddress).Result().Code(), VxError::Timeout);
        EXPECT_EQ(Elapsed(), 3s);
        EXPECT_EQ(m_sent.size(), 1u);
    }

    m_clock.Advance(10s);
    EXPECT_TRUE(m_client.ReadRegister(kAddress));
}

TEST_F(CommandClientTest, ALimitEndsAskingABusyCamera)
{
    const CommandLimit limit(m_client, m_clock.Now() + 100ms);
    m_camera.busy = 1000;

    EXPECT_EQ(m_client.ReadRegister(kAddress).Result().Code(), VxError::Timeout);

    EXPECT_LT(Elapsed(), 150ms);
}

} // namespace
} // namespace control
