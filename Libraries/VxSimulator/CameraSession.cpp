#include "VxSimulator/CameraSession.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <tuple>

namespace simulator {

namespace {

// Chosen: also commands that are too long shall be seen whole.
constexpr std::size_t kReceiveBytes = 2048;

// Chosen: long enough not to cost anything; a heartbeat that begins meanwhile is longer.
constexpr auto kLongestWait = std::chrono::microseconds(400'000);

// Chosen: after a network that fails, so that a failure that stays does not use up a processor.
constexpr auto kPauseAfterFailure = std::chrono::milliseconds(10);

} // namespace

CameraSession::CameraSession(CameraSockets sockets, const VxSimulatorOptions& options,
                             const NetworkFacts& network, const IVxClock& clock, EventSink eventSink)
    : m_sockets(std::move(sockets)),
      m_options(options),
      m_network(network),
      m_clock(clock),
      m_eventSink(std::move(eventSink)),
      m_sender(*m_sockets.stream, options),
      m_device(options, network, clock.Now())
{
    m_threads.emplace_back([this] { Serve(*m_sockets.control); });
    for (const auto& socket : m_sockets.broadcast)
        m_threads.emplace_back([this, &socket] { Serve(*socket); });
    m_threads.emplace_back([this] { Stream(); });
}

CameraSession::~CameraSession()
{
    {
        const VxLock lock(m_mutex);
        m_isStopping = true;
    }
    m_sender.Cancel();
    m_changed.notify_all();
    m_sockets.control->Wake();
    for (const auto& socket : m_sockets.broadcast)
        socket->Wake();
    for (std::thread& thread : m_threads)
        thread.join();
}

CameraSession::State CameraSession::CurrentState() const
{
    return {m_device.ControlOwner(), m_device.IsAcquiring()};
}

std::optional<transport::Ipv4Endpoint> CameraSession::ControlOwner() const
{
    const VxLock lock(m_mutex);
    return m_device.ControlOwner();
}

bool CameraSession::IsAcquiring() const
{
    const VxLock lock(m_mutex);
    return m_device.IsAcquiring();
}

void CameraSession::Vanish()
{
    {
        const VxLock lock(m_mutex);
        m_device.Vanish();
    }
    m_sender.Cancel();
    m_changed.notify_all();
    if (m_eventSink)
        m_eventSink("vanished");
}

std::chrono::microseconds CameraSession::TimeToAdvance() const
{
    const VxLock lock(m_mutex);
    const auto deadline = m_device.NextAdvance();
    if (!deadline)
        return kLongestWait;
    const auto rest = std::chrono::ceil<std::chrono::microseconds>(*deadline - m_clock.Now());
    return std::clamp(rest, std::chrono::microseconds(0), kLongestWait);
}

void CameraSession::Serve(transport::IUdpSocket& socket)
{
    std::vector<std::byte> memory(kReceiveBytes);
    std::array<transport::Datagram, 1> datagrams{transport::Datagram{.memory = memory}};
    while (!m_isStopping) {
        const auto received = socket.Receive(datagrams, TimeToAdvance());
        if (received)
            Handle(datagrams[0].Bytes(), datagrams[0].sender);
        else if (received.Error().Code() == VxError::Timeout)
            Advance();
        else if (received.Error().Code() != VxError::Aborted)
            std::this_thread::sleep_for(kPauseAfterFailure);
    }
}

void CameraSession::Handle(std::span<const std::byte> datagram, const transport::Ipv4Endpoint& sender)
{
    ++m_commandsReceived;
    State before;
    State after;
    Reaction reaction;
    transport::Ipv4Endpoint destination;
    {
        const VxLock lock(m_mutex);
        before = CurrentState();
        reaction = m_device.Handle(datagram, sender, m_clock.Now());
        after = CurrentState();
        destination = m_device.StreamDestination();
    }
    SendAnswer(reaction, sender);
    m_changed.notify_all();
    if (reaction.testPacket)
        m_sender.SendTestPacket(*reaction.testPacket);
    if (reaction.resend)
        m_sender.Resend(*reaction.resend, destination);
    TellChange(before, after);
}

void CameraSession::SendAnswer(const Reaction& reaction, const transport::Ipv4Endpoint& sender)
{
    if (!reaction.answer)
        return;
    transport::Ipv4Endpoint destination = sender;
    const bool isReachable = sender.address.IsSameSubnet(m_options.address, m_network.subnetMask);
    if (reaction.isBroadcastAllowed && !isReachable)
        destination.address = transport::Ipv4Address::LimitedBroadcast();
    // An answer that is lost is asked for again.
    std::ignore = m_sockets.control->SendTo(reaction.answer->Bytes(), destination);
}

void CameraSession::Advance()
{
    State before;
    State after;
    {
        const VxLock lock(m_mutex);
        before = CurrentState();
        m_device.Advance(m_clock.Now());
        after = CurrentState();
    }
    TellChange(before, after);
}

void CameraSession::TellChange(const State& before, const State& after) const
{
    if (!m_eventSink)
        return;
    if (before.owner && before.owner != after.owner)
        m_eventSink("control released or lost by " + before.owner->ToString());
    if (after.owner && before.owner != after.owner)
        m_eventSink("control taken by " + after.owner->ToString());
    if (before.isAcquiring != after.isAcquiring)
        m_eventSink(after.isAcquiring
                        ? "acquisition started"
                        : "acquisition stopped after " + std::to_string(m_framesSent) + " frames");
}

void CameraSession::Stream()
{
    std::unique_lock lock(m_mutex);
    while (!m_isStopping) {
        const auto due = m_device.NextFrameDue();
        const auto now = m_clock.Now();
        if (!due) {
            m_changed.wait(lock); // ended by a command that was handled, and by the end
        } else if (now < *due) {
            m_changed.wait_until(lock, *due);
        } else if (const auto order = m_device.TakeFrame(now)) {
            lock.unlock();
            if (m_sender.SendFrame(*order))
                FrameSent();
            lock.lock();
        }
    }
}

void CameraSession::FrameSent()
{
    const std::uint64_t frames = ++m_framesSent;
    if (m_options.faults.vanishAfterFrames == frames)
        Vanish();
}

} // namespace simulator
