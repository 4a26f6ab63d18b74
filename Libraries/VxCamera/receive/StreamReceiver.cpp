#include "VxCamera/receive/StreamReceiver.h"

#include "VxCamera/receive/Landing.h"
#include "VxCamera/transport/ThreadPriority.h"

#include <algorithm>
#include <array>
#include <new>
#include <system_error>
#include <tuple>
#include <utility>

#include "VxBase/VxRunningThread.h"

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: nothing happens by time while no block is open.
constexpr std::chrono::microseconds kIdleWait = 1s;

// Chosen: so that a network that fails is not asked without pause.
constexpr auto kPauseAfterError = 50ms;

// Chosen: more than any socket buffer holds, so that a sender that does not pause cannot hold up a start.
constexpr int kMostDropped = 100'000;

// Chosen: consumers miss pictures that are held back for longer. By then most receivers have taken as much as
// the socket's buffer holds, and so all that was there when something became due.
constexpr auto kLongestCatchingUp = 1s;

// Chosen: so many leaders without a single payload packet are no accident: the packets are too large for the
// network.
constexpr unsigned kBlocksWithoutPayload = 3;

} // namespace

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
        auto landing = std::make_unique<Landing>();
        DropWhatIsThere(*landing);
        m_thread = std::thread([this, owned = std::move(landing)] {
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
void StreamReceiver::DropWhatIsThere(Landing& landing)
{
    for (int i = 0; i < kMostDropped; ++i) {
        if (m_socket->Receive(landing.Plain(), 0us).Result().Code() == VxError::Timeout)
            return;
    }
}

void StreamReceiver::SetSettings(const AssemblySettings& settings)
{
    {
        const VxLock lock(m_ordersMutex);
        m_orders.settings = settings;
        m_hasOrders = true;
    }
    m_socket->Wake(); // what is waited for may be due earlier
}

AssemblySettings StreamReceiver::Settings() const
{
    const VxLock lock(m_ordersMutex);
    return m_orders.settings;
}

void StreamReceiver::SetLink(std::shared_ptr<const StreamLink> link)
{
    {
        const VxLock lock(m_ordersMutex);
        m_orders.link.swap(link); // the one before ends outside of the lock
        m_orders.cameraPicture.reset();
        m_hasOrders = true;
    }
    m_socket->Wake(); // the way through a firewall is opened at once
}

void StreamReceiver::SetCameraPicture(const std::optional<PictureShape>& picture)
{
    {
        const VxLock lock(m_ordersMutex);
        m_orders.cameraPicture = picture;
        m_hasOrders = true;
    }
    m_socket->Wake(); // before the next packet is looked at
}

bool StreamReceiver::CanResend() const
{
    const VxLock lock(m_ordersMutex);
    return m_orders.link != nullptr && m_orders.link->resend != nullptr;
}

/// Takes over what other threads want.
void StreamReceiver::TakeOrders()
{
    if (!m_hasOrders.exchange(false))
        return;
    Orders orders;
    {
        const VxLock lock(m_ordersMutex);
        orders = m_orders;
    }
    m_assembler.SetSettings(orders.settings);
    m_assembler.SetCameraPicture(orders.cameraPicture);
    if (m_isReset.exchange(false))
        m_silence.TellAgain(m_clock.Now());
    if (orders.link.get() == m_resend.Link())
        return;
    m_resend.SetLink(std::move(orders.link));
    m_silence.OpenWayAgain();
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

void StreamReceiver::Run(Landing& landing)
{
    const auto priority = transport::RaiseThreadPriority();
    m_silence.Start(m_clock.Now());
    m_backlog.reset();
    m_catchingUp.reset();
    m_blocksWithoutPayload = 0;
    bool isLooking = false;
    while (!m_isStopping) {
        try {
            isLooking = ReceiveOnce(landing, isLooking);
        } catch (const std::bad_alloc&) {
            m_lastError = VxError::OutOfMemory;
            m_assembler.Abort(); // before the slots are prepared again, which may lie in its buffers
            isLooking = false;
            std::this_thread::sleep_for(kPauseAfterError);
        }
    }
    m_assembler.Abort();
}

/// @param isLooking  it does not wait, but only looks for more
/// @return  whether the next one should only look
bool StreamReceiver::ReceiveOnce(Landing& landing, bool isLooking)
{
    TakeOrders();
    FollowBacklog();
    const auto slots = landing.Prepare(m_assembler);
    const auto before = m_clock.Now();
    const auto received = m_socket->Receive(slots, isLooking ? 0us : WaitingTime());
    if (received)
        Take(landing, *received);
    const VxError code = received.Result().Code();
    FollowTime(code == VxError::Timeout ? std::optional(before) : std::nullopt);
    WatchSilence();
    if (code != VxError::Ok && code != VxError::Timeout && code != VxError::Aborted) {
        m_lastError = code;
        std::this_thread::sleep_for(kPauseAfterError);
    }
    return AfterReceive(slots.size(), received ? *received : 0, isLooking);
}

/// Where packets wait may change while it runs: a packet ring that gets none is left for the socket's buffer.
void StreamReceiver::FollowBacklog()
{
    const auto backlog =
        m_socket->IsBacklogNear() ? PacketGathering::Backlog::Near : PacketGathering::Backlog::InSystem;
    if (backlog == m_backlog)
        return;
    m_backlog = backlog;
    m_socketBytes = m_socket->ReceiveBufferBytes();
    m_gathering.SetSocket(m_socketBytes, backlog);
}

/// Gives up what was due before a look that found no packet, and nothing else: this thread may have stood
/// still, and what is waited for may be here. A receiver that does not catch up goes by the clock all the
/// same, until it does.
/// @param emptyAt  a time before that look; none: packets came, or nobody has looked
void StreamReceiver::FollowTime(std::optional<IVxClock::Time> emptyAt)
{
    const auto now = m_clock.Now();
    if (emptyAt) {
        m_catchingUp.reset();
        m_assembler.OnTime(*emptyAt);
    }
    const bool isTried = m_catchingUp && (m_catchingUp->bytes >= m_socketBytes ||
                                          now - m_catchingUp->since >= kLongestCatchingUp);
    if (isTried)
        m_assembler.OnTime(now);
    else if (!m_assembler.OnTimeBehind(now))
        m_catchingUp.reset();
    else if (!m_catchingUp)
        m_catchingUp = CatchingUp{now};
}

void StreamReceiver::Take(Landing& landing, std::size_t received)
{
    const auto now = m_clock.Now();
    std::uint64_t bytes = 0;
    landing.Settle(received,
                   [&](const transport::Ipv4Endpoint& sender) { return m_filter.IsCamera(sender); });
    landing.ForEach(received, [&](const Landing::Landed& landed) {
        bytes += landed.datagram.size();
        if (!m_filter.Accepts(landed.sender, landed.packet)) {
            m_counters.packetsForeign.Add();
            if (m_filter.Camera())
                m_silence.OnForeignPacket();
            return;
        }
        m_silence.OnPacket(now);
        if (landed.packet)
            m_assembler.OnPacket(*landed.packet, {landed.datagram.size(), landed.arrival}, now);
        else
            m_assembler.OnPacket(landed.datagram, now); // to be counted
    });
    if (m_catchingUp)
        m_catchingUp->bytes += bytes;
}

/// Lets packets gather when all that were there have been received. Slots that are all filled do not tell
/// whether these were all.
/// @param hasLooked  whether this receive did not wait, but only looked for more
/// @return  whether the next one should only look, too
bool StreamReceiver::AfterReceive(std::size_t slots, std::size_t received, bool hasLooked)
{
    if (received == 0 && !hasLooked)
        return false;
    const auto progress = m_assembler.NewestProgress();
    const auto pause = progress ? std::min(m_gathering.TimeFor(*progress), WaitingTime()) : 0us;
    if (received == slots)
        return pause > 0us;
    if (pause > 0us)
        m_socket->Gather(pause);
    return false;
}

void StreamReceiver::WatchSilence()
{
    const auto due = m_silence.OnTime(m_clock.Now());
    if (due.isSilent) {
        m_haveOthersSent = due.haveOthersCome;
        m_lastError = VxError::Timeout;
    }
    if (due.joins && m_joiner)
        m_joiner(*m_socket);
    if (due.opensWay)
        OpenWay();
}

/// Firewalls let those in whom somebody inside has spoken to.
void StreamReceiver::OpenWay()
{
    const StreamLink* const link = m_resend.Link();
    if (link == nullptr || link->sourcePort == 0)
        return;
    // Chosen: what no camera takes for a command; the content counts for nothing.
    constexpr std::array<std::byte, 4> kNothing{};
    std::ignore = m_socket->SendTo(kNothing, {link->command.address, link->sourcePort}); // comes again
}

std::chrono::microseconds StreamReceiver::WaitingTime() const
{
    if (m_catchingUp)
        return 0us;
    const auto now = m_clock.Now();
    auto due = m_silence.NextDue();
    if (const auto deadline = m_assembler.NextDeadline(now))
        due = std::min(due, *deadline);
    return std::clamp(std::chrono::ceil<std::chrono::microseconds>(due - now), 0us, kIdleWait);
}

BlockBuffer* StreamReceiver::TakeFree(std::size_t wantedBytes)
{
    return m_sink->TakeFree(wantedBytes);
}

void StreamReceiver::Deliver(BlockBuffer& buffer)
{
    if (buffer.info.code != VxError::Ok)
        m_lastError = buffer.info.code;
    m_latest = std::chrono::duration_cast<std::chrono::microseconds>(buffer.info.took);
    m_longest = std::max(m_longest.load(), m_latest.load());
    CountPayload(buffer.info);
    m_rates.OnBlock(m_clock.Now(), m_counters.bytes.Value());
    m_sink->Deliver(buffer);
}

void StreamReceiver::GiveBack(BlockBuffer& buffer)
{
    m_sink->GiveBack(buffer);
}

/// Small packets come and large ones do not: tells whoever can make them smaller.
void StreamReceiver::CountPayload(const BlockInfo& info)
{
    const bool isEmpty =
        info.code == VxError::MissingPackets && info.receivedBytes == 0 && info.geometry.imageBytes > 0;
    m_blocksWithoutPayload = isEmpty ? m_blocksWithoutPayload + 1 : 0;
    if (m_blocksWithoutPayload < kBlocksWithoutPayload)
        return;
    m_blocksWithoutPayload = 0;
    const StreamLink* const link = m_resend.Link();
    if (link != nullptr && link->onPayloadMissing)
        link->onPayloadMissing();
}

void StreamReceiver::ResetStatistics()
{
    m_counters.Reset();
    m_rates.Reset();
    m_lastError = VxError::Ok;
    m_latest = 0us;
    m_longest = 0us;
    m_isReset = true;
    m_hasOrders = true;
    m_socket->Wake(); // the second begins now
}

} // namespace receive
