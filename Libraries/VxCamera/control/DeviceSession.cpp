#include "VxCamera/control/DeviceSession.h"

#include "VxCamera/control/ControlText.h"
#include "VxCamera/control/MemoryBlock.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <utility>

namespace control {

namespace {

using namespace std::chrono_literals;

// Chosen: while heartbeats are switched off nothing is due; switching them on is told.
constexpr auto kIdleInterval = 1h;

// Fixed by the protocol: what READREG and WRITEREG carry.
constexpr std::size_t kRegisterBytes = 4;

// Fixed by the protocol: where the registers of more channels would be, others begin.
constexpr std::uint32_t kMostStreamChannels = 512;

// Chosen: more than a slow camera with the largest description needs. Each command may last long by itself,
// and a connect has many. The wait for a predecessor comes on top.
constexpr auto kLongestConnect = 45s;

// Chosen: a camera that is well takes it within milliseconds.
constexpr auto kLongestRelease = 2s;

/// Whether it is the link that failed, and not the camera that refused.
bool IsLinkFailure(const VxResult& result)
{
    return result.Code() == VxError::Timeout || result.Code() == VxError::NetworkError;
}

constexpr bool IsRegister(std::uint64_t address, std::size_t bytes)
{
    return bytes == kRegisterBytes && address % kRegisterBytes == 0;
}

} // namespace

VxExpected<std::unique_ptr<DeviceSession>> DeviceSession::Connect(const Network& network,
                                                                  const transport::Ipv4Endpoint& device,
                                                                  const transport::NetworkInterface& via)
{
    transport::UdpSocketOptions options;
    options.local.address = via.address;
    options.interfaceIndex = via.index;
    auto socket = network.sockets.OpenUdp(options);
    if (!socket)
        return socket.Error();
    auto session = std::make_unique<DeviceSession>(network, std::move(*socket), device);
    if (auto taken = session->TakeControl(); !taken.IsOK())
        return taken;
    return session;
}

DeviceSession::DeviceSession(const Network& network, std::unique_ptr<transport::IUdpSocket> socket,
                             const transport::Ipv4Endpoint& device)
    : m_network(network), m_client(std::move(socket), device, network.clock)
{
    m_client.SetDenialListener([this] {
        m_isCheckDue = true;
        if (m_onTimingChanged)
            m_onTimingChanged();
    });
}

DeviceSession::~DeviceSession() = default;

VxResult DeviceSession::TakeControl()
{
    ControlPrivilege privilege(m_client, m_network.sockets, m_network.clock);
    const CommandLimit limit(m_client, m_network.clock.Now() + kLongestConnect);
    if (auto taken = privilege.Take(); !taken.IsOK())
        return taken;
    if (auto read = ReadFacts(); !read.IsOK()) {
        m_client.LimitUntil(m_network.clock.Now() + kLongestRelease);
        std::ignore = privilege.Release(); // nobody must wait for a time-out, should the camera hear it
        return read;
    }
    m_ownIdentity = privilege.Owner();
    m_connectEnd = m_client.Limit();
    m_isCheckDue = false; // refusals before control was taken mean nothing
    return m_client.EndReason();
}

VxResult DeviceSession::ReadFacts()
{
    // A camera that refuses one of these has what a camera of the first version of the protocol has.
    std::uint32_t frequencyHigh = 0;
    std::uint32_t frequencyLow = 0;
    struct Row {
        std::uint32_t fallback;
        std::uint32_t address;
        std::uint32_t& value;
    };
    const std::array rows{
        Row{bootstrap::kCapabilityWriteMem, bootstrap::kGvcpCapability, m_facts.capability},
        Row{0, bootstrap::kStreamChannelCapability, m_facts.streamChannelCapability},
        Row{1, bootstrap::kStreamChannelCount, m_facts.streamChannelCount},
        Row{0, bootstrap::kTimestampFrequencyHigh, frequencyHigh},
        Row{0, bootstrap::kTimestampFrequencyLow, frequencyLow},
    };
    for (const Row& row : rows) {
        if (auto read = ReadOr(row.fallback, row.address, row.value); !read.IsOK())
            return read;
    }
    m_facts.streamChannelCount = std::min(m_facts.streamChannelCount, kMostStreamChannels);
    m_facts.tickFrequencyHz = std::uint64_t{frequencyHigh} << 32 | frequencyLow;
    m_client.SetWriteMemorySupported((m_facts.capability & bootstrap::kCapabilityWriteMem) != 0);
    return ReadHeartbeatTimeout();
}

/// The fallback serves when the camera refuses; a link that fails is a failure.
VxResult DeviceSession::ReadOr(std::uint32_t fallback, std::uint32_t address, std::uint32_t& value)
{
    const auto read = m_client.ReadRegister(address);
    value = read.ValueOr(fallback);
    return IsLinkFailure(read.Result()) ? read.Error() : VxResult::Ok();
}

VxResult DeviceSession::ReadHeartbeatTimeout()
{
    std::uint32_t timeoutMs = 0;
    auto read = ReadOr(0, bootstrap::kHeartbeatTimeout, timeoutMs);
    m_heartbeatTimeout = std::chrono::milliseconds(timeoutMs);
    return read;
}

VxResult DeviceSession::Read(std::uint64_t address, std::span<std::byte> bytes)
{
    if (!IsAddressable(address, bytes.size()))
        return {VxError::InvalidParameter, "the camera has no address beyond 32 bits"};
    const auto start = static_cast<std::uint32_t>(address); // 32 bits, tested above
    if (!IsRegister(address, bytes.size()))
        return m_client.ReadMemory(start, bytes);
    const auto value = m_client.ReadRegister(start);
    if (!value)
        return value.Error();
    VxStoreBe<std::uint32_t>(bytes.first<kRegisterBytes>(), *value);
    return VxResult::Ok();
}

VxResult DeviceSession::Write(std::uint64_t address, std::span<const std::byte> bytes)
{
    if (!IsAddressable(address, bytes.size()))
        return {VxError::InvalidParameter, "the camera has no address beyond 32 bits"};
    const auto start = static_cast<std::uint32_t>(address); // 32 bits, tested above
    auto written = IsRegister(address, bytes.size())
                       ? m_client.WriteRegister(start, VxLoadBe<std::uint32_t>(bytes.first<kRegisterBytes>()))
                       : m_client.WriteMemory(start, bytes);
    if (start <= bootstrap::kHeartbeatTimeout && bootstrap::kHeartbeatTimeout - start < bytes.size()) {
        std::ignore = ReadHeartbeatTimeout(); // the camera may have taken another value than was written
        if (m_onTimingChanged)
            m_onTimingChanged();
    }
    return written;
}

void DeviceSession::SetHeartbeat(bool isOn)
{
    m_isHeartbeatOn = isOn;
    if (m_onTimingChanged)
        m_onTimingChanged();
}

void DeviceSession::SetHeartbeatInterval(std::chrono::milliseconds interval)
{
    m_wantedInterval = interval;
    if (m_onTimingChanged)
        m_onTimingChanged();
}

std::chrono::milliseconds DeviceSession::HeartbeatInterval() const
{
    return HeartbeatMonitor::IntervalOf(Timing());
}

HeartbeatMonitor::Timing DeviceSession::Timing() const
{
    return {m_heartbeatTimeout, m_wantedInterval};
}

std::optional<IVxClock::Time> DeviceSession::Beat()
{
    if (!IsAlive())
        return std::nullopt;
    const auto now = m_network.clock.Now();
    if (!m_isHeartbeatOn) {
        m_monitor.reset();
        return now + kIdleInterval;
    }
    if (!m_monitor)
        m_monitor.emplace(Timing(), m_client.LastAnswer());
    m_monitor->SetTiming(Timing());
    m_monitor->OnAnswer(m_client.LastAnswer());
    const bool isCheckDue = m_isCheckDue.exchange(false);
    if (const auto next = m_monitor->NextBeat(); now < next && !isCheckDue)
        return next;
    JudgeBeat(SendBeat());
    if (!IsAlive())
        return std::nullopt;
    return m_monitor->NextBeat();
}

void DeviceSession::JudgeBeat(const VxResult& beat)
{
    const auto now = m_network.clock.Now();
    m_monitor->OnAnswer(m_client.LastAnswer());
    if (beat.Code() == VxError::AccessDenied) {
        m_client.End(beat);
        return;
    }
    if (IsLinkFailure(beat))
        m_monitor->OnFailure(now);
    else
        m_monitor->OnBeat(now); // also when the camera refuses to tell: asking sooner would not help
    if (m_monitor->IsLost(now))
        m_client.End({VxError::LinkLost, "camera " + m_client.Device().address.ToString() +
                                             " has stopped answering; check its cable and power"});
}

VxResult DeviceSession::SendBeat()
{
    const CommandSettings settings = m_monitor->BeatSettings();
    const VxResult lost(VxError::AccessDenied, "camera " + m_client.Device().address.ToString() +
                                                   " is no longer controlled by this program; connect again");
    const auto privilege = m_client.ReadRegister(bootstrap::kControlChannelPrivilege, settings);
    if (!privilege)
        return privilege.Error().Code() == VxError::AccessDenied ? lost : privilege.Error();
    if ((*privilege & bootstrap::kPrivilegeAnyControl) == 0)
        return lost;
    if (!m_ownIdentity)
        return VxResult::Ok();
    // Somebody has control; after a pause of this program it need not be us.
    const auto address = m_client.ReadRegister(bootstrap::kPrimaryApplicationIp, settings);
    const auto port = m_client.ReadRegister(bootstrap::kPrimaryApplicationPort, settings);
    if (!address || !port)
        return address ? port.Result() : address.Result();
    const bool isOurs = transport::Ipv4Address(*address) == m_ownIdentity->application.address &&
                        (*port & 0xFFFF) == m_ownIdentity->application.port; // lower half of the register
    return isOurs ? VxResult::Ok() : lost;
}

void DeviceSession::EndWithin(std::chrono::milliseconds limit)
{
    m_client.EndAt(m_network.clock.Now() + limit,
                   {VxError::NotConnected, "camera " + m_client.Device().address.ToString() +
                                               " was disconnected before it had answered"});
}

VxResult DeviceSession::Release()
{
    auto released = VxResult::Ok();
    if (IsAlive())
        released = ControlPrivilege(m_client, m_network.sockets, m_network.clock).Release();
    m_client.End(
        {VxError::NotConnected, "camera " + m_client.Device().address.ToString() + " is disconnected"});
    return released;
}

} // namespace control
