#include "VxCamera/control/InterfaceScans.h"

#include "VxCamera/wire/gvcp/Command.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace control {

namespace {

// Chosen: room for the answers of many cameras at once; an answer takes about 1 KiB of the system's memory.
constexpr std::size_t kReceiveBufferBytes = std::size_t{256} * 1024;

std::vector<transport::Ipv4Endpoint> TargetsOn(const transport::NetworkInterface& described)
{
    // Loopback has no limited broadcast; a camera on its first address may not listen to broadcasts at all.
    const auto second = described.isLoopback ? described.address : transport::Ipv4Address::LimitedBroadcast();
    return {{described.SubnetBroadcast(), gvcp::kPort}, {second, gvcp::kPort}};
}

} // namespace

bool InterfaceScans::AddEverybody(const transport::NetworkInterface& described)
{
    return Add(described, {TargetsOn(described), gvcp::DiscoveryAnswer::BroadcastAllowed}, Asked::Everybody);
}

bool InterfaceScans::AddOne(const transport::NetworkInterface& described, transport::Ipv4Address camera)
{
    return Add(described, {{{camera, gvcp::kPort}}, gvcp::DiscoveryAnswer::Unicast}, Asked::ItAlone);
}

bool InterfaceScans::Add(const transport::NetworkInterface& described, DiscoveryScan::Question question,
                         Asked asked)
{
    transport::UdpSocketOptions options;
    options.local.address = described.address;
    options.interfaceIndex = described.index;
    options.isBroadcastAllowed = true;
    // A camera whose address is in another subnet can only answer by broadcast.
    options.isBroadcastReceived = question.answer == gvcp::DiscoveryAnswer::BroadcastAllowed;
    options.receiveBufferBytes = kReceiveBufferBytes;
    const auto socket = m_sockets.OpenUdp(options);
    if (!socket)
        return false;
    m_scans.push_back({described, asked, *socket, DiscoveryScan(**socket, std::move(question))});
    return true;
}

void InterfaceScans::Run(Time deadline, const OnCamera& onCamera)
{
    m_deadline = deadline;
    for (bool isLast = false; !isLast && !m_scans.empty();) {
        const auto now = m_clock.Now();
        isLast = now >= m_deadline; // what has come meanwhile still counts, however late this thread is
        Ask(now);
        const VxError waited = m_sockets.WaitForAny(UntilNextTurn(now)).Code();
        if (waited != VxError::Ok && waited != VxError::Timeout)
            return; // the system has nothing left to wait with: what was found so far must do
        TakeAnswers(onCamera);
    }
}

void InterfaceScans::EndAt(Time deadline)
{
    m_deadline = std::min(m_deadline, deadline);
}

void InterfaceScans::Ask(Time now)
{
    const bool isInTime = now < m_deadline;
    for (Scan& scan : m_scans)
        if (!scan.discovery.HasAsked() || (isInTime && now >= scan.discovery.NextQuestion()))
            scan.hasFailed = !scan.discovery.Ask(now).IsOK();
    DropFailed();
}

std::chrono::microseconds InterfaceScans::UntilNextTurn(Time now) const
{
    auto turn = m_deadline;
    for (const Scan& scan : m_scans)
        turn = std::min(turn, scan.discovery.NextQuestion());
    return std::chrono::ceil<std::chrono::microseconds>(std::max(turn, now) - now);
}

void InterfaceScans::TakeAnswers(const OnCamera& onCamera)
{
    for (Scan& scan : m_scans) {
        const auto taken = scan.discovery.TakeAnswers([&](const CameraAnswer& answer) {
            onCamera({answer.camera, {answer.sender.address, gvcp::kPort}, scan.described}, scan.asked);
        });
        scan.hasFailed = !taken.IsOK();
    }
    DropFailed();
}

/// An interface that has just gone down has no cameras; its socket would end every wait.
void InterfaceScans::DropFailed()
{
    for (const Scan& scan : m_scans)
        if (scan.hasFailed)
            m_sockets.Close(*scan.socket);
    std::erase_if(m_scans, [](const Scan& scan) { return scan.hasFailed; });
}

} // namespace control
