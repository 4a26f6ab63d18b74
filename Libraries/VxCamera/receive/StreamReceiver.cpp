#include "VxCamera/receive/StreamReceiver.h"

#include <algorithm>
#include <array>
#include <new>
#include <system_error>

#include "VxBase/VxRunningThread.h"

namespace receive {

namespace {

using namespace std::chrono_literals;

// Fixed by UDP: no datagram is longer.
constexpr std::size_t kSlotBytes = 64 * 1024;

// Chosen: more per call than a fast camera sends while one call is at work.
constexpr std::size_t kSlots = 32;

// Chosen: nothing happens by time while no block is open.
constexpr std::chrono::microseconds kIdleWait = 1s;

// Chosen: so that a network that fails is not asked without pause.
constexpr auto kPauseAfterError = 50ms;

// Chosen: more than any socket buffer holds, so that a sender that does not pause cannot hold up a start.
constexpr int kMostDropped = 100'000;

} // namespace

/// Room for the datagrams of one call. Not cleared: pages that no packet reaches are never touched.
class StreamReceiver::Slots {
public:
    Slots() : m_memory(new std::byte[kSlots * kSlotBytes])
    {
        for (std::size_t i = 0; i < kSlots; ++i)
            m_datagrams[i].memory = {m_memory.get() + i * kSlotBytes, kSlotBytes};
    }
    [[nodiscard]] std::span<transport::Datagram> Datagrams() { return m_datagrams; }

private:
    std::unique_ptr<std::byte[]> m_memory;
    std::array<transport::Datagram, kSlots> m_datagrams{};
};

StreamReceiver::StreamReceiver(std::unique_ptr<transport::IUdpSocket> socket, const IVxClock& clock,
                               std::optional<transport::Ipv4Address> camera)
    : m_socket(std::move(socket)), m_clock(clock), m_filter(camera)
{
}

StreamReceiver::~StreamReceiver()
{
    Stop();
}

VxResult StreamReceiver::Start(IBlockSink& sink)
{
    if (IsRunning() && m_sink != &sink)
        return {VxError::Busy, "another pipeline receives this stream; stop it first"};
    if (IsRunning())
        return VxResult::Ok();
    m_sink = &sink;
    m_isStopping = false;
    m_filter.Forget();
    try {
        auto slots = std::make_unique<Slots>();
        DropWhatIsThere(*slots);
        m_thread = std::thread([this, owned = std::move(slots)] {
            const VxRunningThread counted;
            Run(*owned);
        });
    } catch (const std::system_error&) {
        return {VxError::OutOfMemory, "the system starts no further thread for a stream"};
    } catch (const std::bad_alloc&) {
        return {VxError::OutOfMemory, "no memory for the packets of a stream"};
    }
    return VxResult::Ok();
}

/// Packets of an earlier acquisition would be taken for late ones of the next.
void StreamReceiver::DropWhatIsThere(Slots& slots)
{
    for (int i = 0; i < kMostDropped; ++i) {
        if (m_socket->Receive(slots.Datagrams(), 0us).Result().Code() == VxError::Timeout)
            return;
    }
}

void StreamReceiver::Stop()
{
    if (!IsRunning())
        return;
    m_isStopping = true;
    m_socket->Wake();
    m_thread.join();
    m_sink = nullptr;
}

void StreamReceiver::Stop(const IBlockSink& sink)
{
    if (m_sink == &sink)
        Stop();
}

void StreamReceiver::Run(Slots& slots)
{
    while (!m_isStopping) {
        const auto received = m_socket->Receive(slots.Datagrams(), WaitingTime());
        try {
            if (received)
                Take(std::span(slots.Datagrams()).first(*received));
            m_assembler.OnTime(m_clock.Now());
        } catch (const std::bad_alloc&) {
            m_lastError = VxError::OutOfMemory;
            m_assembler.Abort();
        }
        const VxError code = received.Result().Code();
        if (code != VxError::Ok && code != VxError::Timeout && code != VxError::Aborted) {
            m_lastError = code;
            std::this_thread::sleep_for(kPauseAfterError);
        }
    }
    m_assembler.Abort();
}

void StreamReceiver::Take(std::span<const transport::Datagram> datagrams)
{
    const auto now = m_clock.Now();
    for (const transport::Datagram& datagram : datagrams) {
        if (!m_filter.Accepts(datagram.sender, datagram.Bytes()))
            m_counters.packetsForeign.Add();
        else
            m_assembler.OnPacket(datagram.Bytes(), now);
    }
}

std::chrono::microseconds StreamReceiver::WaitingTime() const
{
    const auto deadline = m_assembler.NextDeadline();
    if (!deadline)
        return kIdleWait;
    const auto rest = std::chrono::ceil<std::chrono::microseconds>(*deadline - m_clock.Now());
    return std::clamp(rest, 0us, kIdleWait);
}

BlockBuffer* StreamReceiver::TakeFree(std::size_t wantedBytes)
{
    return m_sink->TakeFree(wantedBytes);
}

void StreamReceiver::Deliver(BlockBuffer& buffer)
{
    if (buffer.info.code != VxError::Ok)
        m_lastError = buffer.info.code;
    m_rates.OnBlock(m_clock.Now(), m_counters.bytes.Value());
    m_sink->Deliver(buffer);
}

void StreamReceiver::GiveBack(BlockBuffer& buffer)
{
    m_sink->GiveBack(buffer);
}

void StreamReceiver::ResetStatistics()
{
    m_counters.Reset();
    m_rates.Reset();
    m_lastError = VxError::Ok;
}

} // namespace receive
