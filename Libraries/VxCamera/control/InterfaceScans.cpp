#include "VxCamera/control/InterfaceScans.h"

#include "VxBase/VxRunningThread.h"
#include "VxCamera/wire/gvcp/Command.h"

#include <exception>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace control {

namespace {

// Chosen: room for the answers of many cameras at once; an answer takes about 1 KiB of the system's memory.
constexpr std::size_t kReceiveBufferBytes = 256 * 1024;

std::vector<transport::Ipv4Endpoint> TargetsOn(const transport::NetworkInterface& described)
{
    // Loopback has no limited broadcast; a camera on its first address may not listen to broadcasts at all.
    const auto second = described.isLoopback ? described.address : transport::Ipv4Address::LimitedBroadcast();
    return {{described.SubnetBroadcast(), gvcp::kPort}, {second, gvcp::kPort}};
}

/// Waits for threads, however the scope is left.
class JoinedThreads {
public:
    JoinedThreads() = default;
    ~JoinedThreads()
    {
        for (std::thread& thread : m_threads)
            thread.join();
    }
    JoinedThreads(const JoinedThreads&) = delete;
    JoinedThreads& operator=(const JoinedThreads&) = delete;

    template <typename Body>
    void Add(Body&& body)
    {
        m_threads.emplace_back(std::forward<Body>(body));
    }

private:
    std::vector<std::thread> m_threads;
};

} // namespace

bool InterfaceScans::AddEverybody(const transport::NetworkInterface& described)
{
    return Add(described, {TargetsOn(described), gvcp::DiscoveryAnswer::BroadcastAllowed});
}

bool InterfaceScans::AddOne(const transport::NetworkInterface& described, transport::Ipv4Address camera)
{
    return Add(described, {{{camera, gvcp::kPort}}, gvcp::DiscoveryAnswer::Unicast});
}

bool InterfaceScans::Add(const transport::NetworkInterface& described, DiscoveryScan::Question question)
{
    transport::UdpSocketOptions options;
    options.local.address = described.address;
    options.interfaceIndex = described.index;
    options.isBroadcastAllowed = true;
    // A camera whose address is in another subnet can only answer by broadcast.
    options.isBroadcastReceived = question.answer == gvcp::DiscoveryAnswer::BroadcastAllowed;
    options.receiveBufferBytes = kReceiveBufferBytes;
    auto socket = m_sockets.OpenUdp(options);
    if (!socket)
        return false;
    m_scans.push_back({described, std::move(question), std::move(*socket)});
    return true;
}

void InterfaceScans::Run(const OnCamera& onCamera)
{
    JoinedThreads threads;
    for (std::size_t i = 1; i < m_scans.size(); ++i) {
        try {
            threads.Add([this, &onCamera, i] {
                const VxRunningThread counted;
                RunOneQuietly(m_scans[i], onCamera);
            });
        } catch (const std::exception&) {
            break; // no thread or memory left: the interfaces scanned so far must do
        }
    }
    if (!m_scans.empty())
        RunOneQuietly(m_scans.front(), onCamera);
}

/// An interface on which the search fails has no cameras; the others decide.
void InterfaceScans::RunOneQuietly(Scan& scan, const OnCamera& onCamera) noexcept
{
    try {
        RunOne(scan, onCamera);
    } catch (...) { // for want of memory; on a thread, nobody could catch it
    }
}

void InterfaceScans::RunOne(Scan& scan, const OnCamera& onCamera)
{
    DiscoveryScan discovery(*scan.socket, m_clock, scan.question);
    const auto deadline = [this] { return Time(m_deadline.load()); };
    const auto asked =
        scan.question.answer == gvcp::DiscoveryAnswer::Unicast ? Asked::ItAlone : Asked::Everybody;
    // An interface that has just gone down has no cameras, either.
    std::ignore = discovery.Run(deadline, [&](const CameraAnswer& answer) {
        onCamera({answer.camera, {answer.sender.address, gvcp::kPort}, scan.described}, asked);
    });
}

void InterfaceScans::EndAt(Time deadline)
{
    auto present = m_deadline.load();
    while (deadline.time_since_epoch() < present &&
           !m_deadline.compare_exchange_weak(present, deadline.time_since_epoch())) {
    }
    for (Scan& scan : m_scans)
        scan.socket->Wake();
}

} // namespace control
