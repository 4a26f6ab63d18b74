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

// Chosen: real cameras take seconds; long enough that every command of a client fails meanwhile.
constexpr auto kRebootTime = std::chrono::milliseconds(1000);

} // namespace

CameraSession::CameraSession(CameraSockets sockets, const VxSimulatorOptions& options, const IVxClock& clock,
                             Callbacks callbacks)
    : m_control(std::move(sockets.control)),
      m_stream(std::move(sockets.stream)),
      m_options(options),
      m_clock(clock),
      m_callbacks(std::move(callbacks)),
      m_sender(m_stream, options),
      m_device(options, sockets.network, clock.Now()),
      m_subnetMask(sockets.network.subnetMask)
{
    for (auto& socket : sockets.broadcast)
        m_broadcast.push_back(socket ? std::make_unique<MovableSocket>(std::move(socket)) : nullptr);
    m_threads.emplace_back([this] { Serve(m_control); });
    for (const auto& socket : m_broadcast)
        if (socket)
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
    m_control.Wake();
    for (const auto& socket : m_broadcast)
        if (socket)
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
    if (m_callbacks.eventSink)
        m_callbacks.eventSink("vanished");
}

std::chrono::microseconds CameraSession::TimeToAdvance() const
{
    const VxLock lock(m_mutex);
    auto deadline = m_device.NextAdvance();
    if (!m_lateAnswers.empty())
        deadline = std::min(deadline.value_or(m_lateAnswers.front().due), m_lateAnswers.front().due);
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
        SendWhatIsDue();
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
    // A camera that cannot have the address stays where it is, and stays silent.
    if (!reaction.newAddress || MoveTo(*reaction.newAddress).IsOK())
        SendAnswer(reaction, sender);
    SendLate(reaction, sender);
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
    if (reaction.isBroadcastAllowed) {
        const VxLock lock(m_mutex);
        if (!sender.address.IsSameSubnet(m_control.LocalEndpoint().address, m_subnetMask))
            destination.address = transport::Ipv4Address::LimitedBroadcast();
    }
    // An answer that is lost is asked for again.
    std::ignore = m_control.SendTo(reaction.answer->Bytes(), destination);
}

void CameraSession::SendLate(const Reaction& reaction, const transport::Ipv4Endpoint& sender)
{
    const VxLock lock(m_mutex);
    for (const TimedAnswer& each : reaction.later) {
        const auto place = std::ranges::upper_bound(m_lateAnswers, each.due, {}, &LateAnswer::due);
        m_lateAnswers.insert(place, {each.due, each.answer, sender});
    }
}

void CameraSession::SendWhatIsDue()
{
    for (;;) {
        LateAnswer late;
        {
            const VxLock lock(m_mutex);
            if (m_lateAnswers.empty() || m_clock.Now() < m_lateAnswers.front().due)
                return;
            late = m_lateAnswers.front();
            m_lateAnswers.pop_front();
        }
        std::ignore = m_control.SendTo(late.answer.Bytes(), late.destination); // as any answer
    }
}

VxResult CameraSession::MoveTo(const gvcp::ForceIpCommand& address)
{
    const transport::Ipv4Address wanted(address.ipAddress);
    if (wanted != m_control.LocalEndpoint().address) {
        auto sockets = m_callbacks.openSockets(wanted);
        if (!sockets)
            return sockets.Error();
        m_control.MoveTo(std::move(sockets->control));
        m_stream.MoveTo(std::move(sockets->stream));
        for (std::size_t i = 0; i < std::min(m_broadcast.size(), sockets->broadcast.size()); ++i)
            if (m_broadcast[i] && sockets->broadcast[i])
                m_broadcast[i]->MoveTo(std::move(sockets->broadcast[i]));
    }
    const VxLock lock(m_mutex);
    m_device.SetAddress(address, m_stream.LocalEndpoint().port);
    m_subnetMask = transport::Ipv4Address(address.subnetMask);
    return VxResult::Ok();
}

void CameraSession::Reboot()
{
    {
        const VxLock lock(m_mutex);
        const auto now = m_clock.Now();
        m_lateAnswers.clear();
        m_device.Reboot(now, now + kRebootTime);
    }
    if (m_callbacks.eventSink)
        m_callbacks.eventSink("starts anew");
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
    if (!m_callbacks.eventSink)
        return;
    if (before.owner && before.owner != after.owner)
        m_callbacks.eventSink("control released or lost by " + before.owner->ToString());
    if (after.owner && before.owner != after.owner)
        m_callbacks.eventSink("control taken by " + after.owner->ToString());
    if (before.isAcquiring != after.isAcquiring)
        m_callbacks.eventSink(after.isAcquiring
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
    if (m_options.faults.rebootAfterFrames == frames)
        Reboot();
}

} // namespace simulator
