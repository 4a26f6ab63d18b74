#include "VxCamera/control/CommandClient.h"

#include "VxCamera/control/CommandExchange.h"
#include "VxCamera/control/ControlText.h"
#include "VxCamera/control/MemoryBlock.h"
#include "VxCamera/wire/gvcp/Command.h"
#include "VxCamera/wire/gvcp/ReadMem.h"
#include "VxCamera/wire/gvcp/ReadReg.h"
#include "VxCamera/wire/gvcp/WriteMem.h"
#include "VxCamera/wire/gvcp/WriteReg.h"

#include <algorithm>
#include <array>
#include <vector>

namespace control {

namespace {

using namespace std::chrono_literals;
using transport::Datagram;

// Chosen: larger than any acknowledge, so that one that is too long is seen as such.
constexpr std::size_t kReceiveBytes = 1024;

// Chosen: a busy camera is asked again for up to a second.
constexpr auto kBusyDelay = 20ms;
constexpr int kBusyTries = 50;

// Chosen: whatever a camera asks for, busy or pending, one command is given up then. The longest command
// known, saving all settings to flash memory, takes seconds.
constexpr auto kLongestCommand = 60s;

// Chosen: all commands of one access to memory together. A camera needs milliseconds for a command, so this
// is enough for megabytes; and others wait for whoever reads a feature.
constexpr auto kLongestMemoryAccess = 10s;

// Chosen: after a command that was never answered the camera is probably gone. The next ones find out
// quickly, so that stopping and closing do not add up to many seconds.
constexpr CommandSettings kAfterSilence{100ms, 0};

VxError CodeOf(gvcp::Status status)
{
    switch (status) {
    case gvcp::Status::AccessDenied:
        return VxError::AccessDenied;
    case gvcp::Status::WriteProtect:
        return VxError::NotWritable;
    case gvcp::Status::NotImplemented:
        return VxError::NotSupported;
    default:
        return VxError::CameraError;
    }
}

/// A camera can end a write before its last byte, and call that a success all the same.
VxResult CheckAllWritten(std::span<const std::byte> payload, std::size_t bytes)
{
    const auto ack = gvcp::ParseWriteMemAck(payload);
    if (!ack || ack->index >= bytes) // some do not tell how far they came
        return VxResult::Ok();
    return {VxError::CameraError, "the camera wrote only " + std::to_string(ack->index) + " of " +
                                      std::to_string(bytes) + " bytes"};
}

} // namespace

CommandClient::CommandClient(std::unique_ptr<transport::IUdpSocket> socket,
                             const transport::Ipv4Endpoint& device, const IVxClock& clock)
    : m_socket(std::move(socket)),
      m_device(device),
      m_clock(clock),
      m_lastAnswer(clock.Now().time_since_epoch())
{
}

VxExpected<std::uint32_t> CommandClient::ReadRegister(std::uint32_t address)
{
    return ReadRegister(address, Settings());
}

VxExpected<std::uint32_t> CommandClient::ReadRegister(std::uint32_t address, const CommandSettings& settings)
{
    std::uint32_t value = 0;
    const Request request{
        "read register", address, gvcp::Ack::ReadReg,
        [&](std::uint16_t id) { return gvcp::MakeReadRegCommand(id, std::span(&address, 1)); },
        [&](std::span<const std::byte> payload) -> VxResult {
            const auto ack = gvcp::ParseReadRegAck(payload);
            if (!ack)
                return ack.Error();
            value = ack->values.front();
            return VxResult::Ok();
        }};
    if (auto done = Execute(request, settings); !done.IsOK())
        return done;
    return value;
}

VxResult CommandClient::WriteRegister(std::uint32_t address, std::uint32_t value)
{
    return WriteRegister(address, value, Settings());
}

VxResult CommandClient::WriteRegister(std::uint32_t address, std::uint32_t value,
                                      const CommandSettings& settings)
{
    const gvcp::RegisterValue write{address, value};
    const Request request{
        "write register", address, gvcp::Ack::WriteReg,
        [&](std::uint16_t id) { return gvcp::MakeWriteRegCommand(id, std::span(&write, 1)); },
        [](std::span<const std::byte>) { return VxResult::Ok(); }};
    return Execute(request, settings);
}

VxResult CommandClient::ReadMemory(std::uint32_t address, std::span<std::byte> bytes)
{
    if (!IsAddressable(address, bytes.size()))
        return {VxError::InvalidParameter, "memory beyond 32-bit addresses: " + HexText(address)};
    const auto end = m_clock.Now() + kLongestMemoryAccess;
    std::array<std::byte, gvcp::kMaxMemoryBytes> memory;
    while (!bytes.empty()) {
        const MemoryBlock block = FirstBlock(address, bytes.size());
        const auto aligned = std::span(memory).first(block.bytes);
        if (auto read = ReadBlock(block.address, aligned, end); !read.IsOK())
            return read;
        std::ranges::copy(aligned.subspan(block.skipBytes, block.wantedBytes), bytes.begin());
        bytes = bytes.subspan(block.wantedBytes);
        address += static_cast<std::uint32_t>(block.wantedBytes); // at most 512; wraps to 0 only at the end
    }
    return VxResult::Ok();
}

VxResult CommandClient::ReadBlock(std::uint32_t address, std::span<std::byte> bytes, IVxClock::Time end)
{
    if (auto late = CheckTime("read memory", address, end); !late.IsOK())
        return late;
    const gvcp::ReadMemCommand command{address,
                                       static_cast<std::uint16_t>(bytes.size())}; // a block: at most 512
    const Request request{"read memory", address, gvcp::Ack::ReadMem,
                          [&](std::uint16_t id) { return gvcp::MakeReadMemCommand(id, command); },
                          [&](std::span<const std::byte> payload) -> VxResult {
                              const auto ack = gvcp::ParseReadMemAck(payload);
                              if (!ack)
                                  return ack.Error();
                              if (ack->address != address || ack->data.size() < bytes.size())
                                  return {VxError::InvalidData, "it sent other bytes than were asked for"};
                              std::ranges::copy(ack->data.first(bytes.size()), bytes.begin());
                              return VxResult::Ok();
                          }};
    return Execute(request, Settings());
}

VxResult CommandClient::WriteMemory(std::uint32_t address, std::span<const std::byte> bytes)
{
    if (!IsAddressable(address, bytes.size()))
        return {VxError::InvalidParameter, "memory beyond 32-bit addresses: " + HexText(address)};
    const auto end = m_clock.Now() + kLongestMemoryAccess;
    std::array<std::byte, gvcp::kMaxMemoryBytes> memory;
    while (!bytes.empty()) {
        const MemoryBlock block = FirstBlock(address, bytes.size());
        const auto aligned = std::span(memory).first(block.bytes);
        if (block.wantedBytes != block.bytes) {
            if (auto read = ReadBlock(block.address, aligned, end); !read.IsOK())
                return read;
        }
        std::ranges::copy(bytes.first(block.wantedBytes), aligned.subspan(block.skipBytes).begin());
        if (auto written = WriteBlock(block.address, aligned, end); !written.IsOK())
            return written;
        bytes = bytes.subspan(block.wantedBytes);
        address += static_cast<std::uint32_t>(block.wantedBytes); // at most 512; wraps to 0 only at the end
    }
    return VxResult::Ok();
}

VxResult CommandClient::WriteBlock(std::uint32_t address, std::span<const std::byte> bytes,
                                   IVxClock::Time end)
{
    if (auto late = CheckTime("write memory", address, end); !late.IsOK())
        return late;
    if (m_canWriteMemory) {
        const gvcp::WriteMemCommand command{address, bytes};
        const Request request{
            "write memory", address, gvcp::Ack::WriteMem,
            [&](std::uint16_t id) { return gvcp::MakeWriteMemCommand(id, command); },
            [&](std::span<const std::byte> payload) { return CheckAllWritten(payload, bytes.size()); }};
        return Execute(request, Settings());
    }
    for (std::size_t i = 0; i < bytes.size(); i += gvcp::kAlignment) {
        const auto word = VxLoadBe<std::uint32_t>(bytes.subspan(i).first<sizeof(std::uint32_t)>());
        const auto at = address + static_cast<std::uint32_t>(i); // a block has at most 512 bytes
        if (auto late = CheckTime("write memory", at, end); !late.IsOK())
            return late;
        if (auto written = WriteRegister(at, word); !written.IsOK())
            return written;
    }
    return VxResult::Ok();
}

/// @param end  of the whole access to memory; the command under way then is not broken off
VxResult CommandClient::CheckTime(const char* verb, std::uint32_t address, IVxClock::Time end) const
{
    if (m_clock.Now() < end)
        return VxResult::Ok();
    return {VxError::Timeout, Describe(verb, address) + ": the camera has not come further within " +
                                  std::to_string(std::chrono::seconds(kLongestMemoryAccess).count()) +
                                  " s; it answers too slowly: ask for less at once, or check the network"};
}

VxResult CommandClient::Execute(const Request& request, const CommandSettings& settings)
{
    const VxLock lock(m_mutex);
    const auto end = std::min<IVxClock::Time>(m_clock.Now() + kLongestCommand, Limit());
    for (int busy = 0; busy < kBusyTries && m_clock.Now() < end; ++busy) {
        if (HasEnded())
            return EndReason();
        auto result = SendAndAwait(request, m_isSilent ? kAfterSilence : settings, end);
        if (result.Code() == VxError::Timeout && m_clock.Now() >= Limit())
            break;
        if (result.Code() != VxError::Busy)
            return result;
        Pause(kBusyDelay);
    }
    if (m_clock.Now() >= Limit())
        return {VxError::Timeout,
                Describe(request) + ": the camera lets itself be waited for too long; switch it off and on"};
    return {VxError::Busy, Describe(request) + ": the camera is busy; try again later"};
}

VxResult CommandClient::SendAndAwait(const Request& request, const CommandSettings& settings,
                                     IVxClock::Time end)
{
    m_requestId = gvcp::NextRequestId(m_requestId);
    const auto command = request.make(m_requestId);
    if (!command)
        return command.Error();
    if (auto sent = m_socket->SendTo(command->Bytes(), m_device); !sent.IsOK())
        return {sent.Code(), Describe(request) + ": " + sent.GetDescription().Narrow()};
    CommandExchange exchange({m_device, m_requestId, request.ack}, settings, m_clock.Now(), end);
    auto result = Await(exchange, *command, request);
    return result.Code() == VxError::Timeout ? Unanswered(request, settings) : result;
}

VxResult CommandClient::Await(CommandExchange& exchange, const gvcp::Datagram& command,
                              const Request& request)
{
    using State = CommandExchange::State;
    std::array<std::byte, kReceiveBytes> memory;
    for (;;) {
        Datagram datagram{memory};
        const auto rest =
            std::min<IVxClock::Time>(exchange.WaitUntil(), IVxClock::Time(m_endTime.load())) - m_clock.Now();
        const auto received = m_socket->Receive(
            {&datagram, 1}, std::max(std::chrono::ceil<std::chrono::microseconds>(rest), 0us));
        const VxError code = received.Result().Code();
        State state = State::Waiting;
        if (received) {
            state = exchange.OnDatagram(datagram.sender, datagram.Bytes(), m_clock.Now());
            if (state != State::Waiting) { // anybody can send something in the camera's name
                m_isSilent = false;
                m_lastAnswer = m_clock.Now().time_since_epoch();
            }
        } else if (code != VxError::Aborted && code != VxError::Timeout) {
            return received.Error();
        }
        if (state == State::Waiting || state == State::Pending) {
            if (HasEnded())
                return EndReason();
            state = exchange.OnTime(m_clock.Now()); // also while datagrams of others keep coming
        }
        if (state == State::Answered)
            return Judge(exchange.Answer(), request);
        if (state == State::Busy)
            return VxError::Busy;
        if (state == State::TimedOut)
            return VxError::Timeout;
        if (state == State::SendAgain) {
            if (auto sent = m_socket->SendTo(command.Bytes(), m_device); !sent.IsOK())
                return sent;
        }
    }
}

VxResult CommandClient::Judge(const gvcp::AckPacket& answer, const Request& request) const
{
    const gvcp::Status status = answer.header.status;
    if (!gvcp::IsGood(status)) {
        const bool isWrite = request.ack == gvcp::Ack::WriteReg || request.ack == gvcp::Ack::WriteMem;
        if (isWrite && status == gvcp::Status::AccessDenied && m_onDenied)
            m_onDenied();
        return {CodeOf(status), Describe(request) + ": the camera refuses: " + gvcp::StatusText(status)};
    }
    const auto taken = request.take(answer.payload);
    if (taken.IsOK())
        return taken;
    if (taken.Code() == VxError::CameraError)
        return {VxError::CameraError, Describe(request) + ": " + taken.GetDescription().Narrow()};
    return {VxError::InvalidData,
            Describe(request) + ": the camera's answer makes no sense: " + taken.GetDescription().Narrow()};
}

VxResult CommandClient::Unanswered(const Request& request, const CommandSettings& settings)
{
    m_isSilent = true;
    return {VxError::Timeout, Describe(request) + ": no answer to " + std::to_string(settings.retries + 1) +
                                  " tries of " + std::to_string(settings.ackTimeout.count()) +
                                  " ms; check its power, its cable and this machine's firewall"};
}

std::string CommandClient::Describe(const Request& request) const
{
    return Describe(request.verb, request.address);
}

std::string CommandClient::Describe(const char* verb, std::uint32_t address) const
{
    return "camera " + m_device.address.ToString() + ", " + verb + " " + HexText(address);
}

void CommandClient::End(const VxResult& reason)
{
    {
        const VxLock lock(m_endMutex);
        if (m_endReason.IsOK())
            m_endReason = reason;
        m_isEnded = !m_endReason.IsOK();
    }
    m_socket->Wake();
}

void CommandClient::EndAt(IVxClock::Time time, const VxResult& reason)
{
    {
        const VxLock lock(m_endMutex);
        if (m_lateReason.IsOK()) {
            m_lateReason = reason;
            m_endTime = time.time_since_epoch();
        }
    }
    m_socket->Wake(); // the command under way looks how long it may still wait
}

bool CommandClient::HasEnded()
{
    const VxLock lock(m_endMutex);
    if (m_endReason.IsOK() && m_clock.Now().time_since_epoch() >= m_endTime.load())
        m_endReason = m_lateReason;
    m_isEnded = !m_endReason.IsOK();
    return m_isEnded;
}

VxResult CommandClient::EndReason() const
{
    const VxLock lock(m_endMutex);
    return m_endReason;
}

void CommandClient::PostponeLimit(IVxClock::Time::duration duration)
{
    if (Limit() != kNoLimit)
        LimitUntil(Limit() + duration);
}

void CommandClient::Pause(std::chrono::milliseconds duration)
{
    const auto end = m_clock.Now() + duration;
    std::array<std::byte, kReceiveBytes> memory;
    for (auto rest = end - m_clock.Now(); rest > rest.zero(); rest = end - m_clock.Now()) {
        Datagram datagram{memory};
        const auto received =
            m_socket->Receive({&datagram, 1}, std::chrono::ceil<std::chrono::microseconds>(rest));
        const VxError code = received.Result().Code();
        if (code != VxError::Ok && code != VxError::Timeout)
            return; // ended, or no network: the next command says so
    }
}

void CommandClient::UpdateSettings(const std::function<void(CommandSettings&)>& change)
{
    const VxLock lock(m_endMutex);
    change(m_settings);
}

CommandSettings CommandClient::Settings() const
{
    const VxLock lock(m_endMutex);
    return m_settings;
}

IVxClock::Time CommandClient::LastAnswer() const
{
    return IVxClock::Time(m_lastAnswer.load());
}

} // namespace control
