#include "VxSimulator/device/ControlPrivilege.h"

#include "VxCamera/wire/registers/BootstrapBits.h"

namespace simulator {

using gvcp::Status;

Status ControlPrivilege::Write(const transport::Ipv4Endpoint& application, std::uint32_t value, Time now)
{
    if (m_owner && *m_owner != application)
        return Status::AccessDenied;
    if ((value & bootstrap::kPrivilegeAnyControl) == 0) {
        Release();
        return Status::Success;
    }
    m_owner = application;
    m_value = value & bootstrap::kPrivilegeAnyControl; // switchover is not offered
    m_lastHeard = now;
    return Status::Success;
}

void ControlPrivilege::Touch(const transport::Ipv4Endpoint& application, Time now)
{
    if (m_owner == application)
        m_lastHeard = now;
}

bool ControlPrivilege::Expire(Time now, std::chrono::milliseconds timeout)
{
    const auto expiry = ExpiryTime(timeout);
    if (!expiry || now <= *expiry)
        return false;
    Release();
    return true;
}

std::optional<ControlPrivilege::Time> ControlPrivilege::ExpiryTime(std::chrono::milliseconds timeout) const
{
    if (!m_owner)
        return std::nullopt;
    return m_lastHeard + timeout;
}

bool ControlPrivilege::MayRead(const transport::Ipv4Endpoint& application) const
{
    return (m_value & bootstrap::kPrivilegeExclusive) == 0 || m_owner == application;
}

bool ControlPrivilege::MayWrite(const transport::Ipv4Endpoint& application) const
{
    return m_owner == application;
}

void ControlPrivilege::Release()
{
    m_owner.reset();
    m_value = 0;
}

} // namespace simulator
