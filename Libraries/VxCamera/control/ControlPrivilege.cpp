#include "VxCamera/control/ControlPrivilege.h"

#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include <algorithm>
#include <string>

namespace control {

namespace {

using namespace std::chrono_literals;

// Chosen: often enough that a user does not notice the steps.
constexpr auto kRetryInterval = 200ms;

// Chosen: the camera's timer started with the last command of the predecessor, so this is ample.
constexpr auto kGraceAfterHeartbeat = 1000ms;

// Chosen: nobody waits longer for a predecessor than this, whatever time-out it had set.
constexpr auto kLongestWait = 30s;

} // namespace

VxResult ControlPrivilege::Take()
{
    auto taken = TryTake();
    if (taken.Code() != VxError::AccessDenied)
        return taken;
    const auto owner = Owner();
    if (owner && IsOwnPredecessor(*owner))
        taken = RetryUntilHeartbeatEnds(taken);
    return taken.Code() == VxError::AccessDenied ? Refused(taken, owner) : taken;
}

/// Some cameras do not answer at all when another application than the controlling one writes.
VxResult ControlPrivilege::TryTake()
{
    const auto write = [this] {
        return m_client.WriteRegister(bootstrap::kControlChannelPrivilege, bootstrap::kPrivilegeControl);
    };
    auto taken = write();
    if (taken.Code() != VxError::Timeout)
        return taken;
    const auto privilege = m_client.ReadRegister(bootstrap::kControlChannelPrivilege);
    if (!privilege)
        return taken;
    if ((*privilege & bootstrap::kPrivilegeAnyControl) != 0)
        return {VxError::AccessDenied, taken.GetDescription()};
    return write(); // the other one's heartbeat has run out since
}

VxResult ControlPrivilege::Release()
{
    return m_client.WriteRegister(bootstrap::kControlChannelPrivilege, 0);
}

std::optional<ControlOwner> ControlPrivilege::Owner()
{
    const auto capability = m_client.ReadRegister(bootstrap::kGvcpCapability);
    if (!capability || (*capability & bootstrap::kCapabilityPrimaryApplication) == 0)
        return std::nullopt;
    const auto address = m_client.ReadRegister(bootstrap::kPrimaryApplicationIp);
    const auto port = m_client.ReadRegister(bootstrap::kPrimaryApplicationPort);
    if (!address || !port || *address == 0)
        return std::nullopt;
    // The port is the lower half of its register.
    return ControlOwner{{transport::Ipv4Address(*address), static_cast<std::uint16_t>(*port & 0xFFFF)}};
}

bool ControlPrivilege::IsOwnPredecessor(const ControlOwner& owner)
{
    if (owner.application.address != m_client.Local().address || owner.application.port == 0)
        return false;
    transport::UdpSocketOptions options;
    options.local = owner.application;
    return m_sockets.OpenUdp(options)
        .HasValue(); // a port that can be opened is nobody's: its program has ended
}

VxResult ControlPrivilege::RetryUntilHeartbeatEnds(VxResult refusal)
{
    const auto heartbeat = m_client.ReadRegister(bootstrap::kHeartbeatTimeout);
    const std::chrono::milliseconds timeout(heartbeat ? *heartbeat : 0);
    const auto wait = std::min<std::chrono::milliseconds>(timeout + kGraceAfterHeartbeat, kLongestWait);
    const auto end = m_clock.Now() + wait;
    m_client.PostponeLimit(wait);
    while (refusal.Code() == VxError::AccessDenied && m_clock.Now() < end) {
        m_client.Pause(kRetryInterval);
        refusal = TryTake();
    }
    return refusal;
}

VxResult ControlPrivilege::Refused(const VxResult& refusal, const std::optional<ControlOwner>& owner) const
{
    const std::string who =
        owner ? "the application at " + owner->application.ToString() : "another application";
    return {VxError::AccessDenied, "camera " + m_client.Device().address.ToString() + " is controlled by " +
                                       who + "; end that one, or receive its stream passively (" +
                                       refusal.GetDescription().Narrow() + ")"};
}

} // namespace control
