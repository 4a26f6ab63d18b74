#include "VxDSSource/camera/VxSystem.h"

#include "VxCamera/surface/CameraNetwork.h"
#include "VxCamera/surface/FoundInterface.h"
#include "VxCamera/surface/NoThrow.h"

#include <vector>

// Chosen: a camera that delays its answer by the longest time the protocol suggests (a second) is still
// heard.
constexpr std::chrono::milliseconds kDetectionTimeout{1500};

/// The search and what it found last.
class VxSystemImpl {
public:
    std::chrono::milliseconds timeout = kDetectionTimeout;
    std::vector<std::unique_ptr<FoundInterface>> interfaces; // addresses stay until the next search

    VxResult Find()
    {
        interfaces.clear();
        CameraNetwork network;
        control::CameraFinder finder(network.Parts());
        const auto scanned = finder.FindAll(timeout);
        if (!scanned)
            return scanned.Error();
        for (const control::ScannedInterface& each : *scanned)
            interfaces.push_back(std::make_unique<FoundInterface>(each));
        return VxResult::Ok();
    }
};

VxSystem::VxSystem() : m_impl(std::make_unique<VxSystemImpl>()) {}

VxSystem::~VxSystem() = default;

void VxSystem::SetDetectionTimeout(std::uint32_t timeoutMs)
{
    m_impl->timeout = std::chrono::milliseconds(timeoutMs);
}

VxResult VxSystem::Find()
{
    return NoThrow([this] { return m_impl->Find(); });
}

std::size_t VxSystem::GetInterfaceCount() const
{
    return m_impl->interfaces.size();
}

const VxInterface* VxSystem::GetInterface(std::size_t index) const
{
    return index < m_impl->interfaces.size() ? m_impl->interfaces[index].get() : nullptr;
}
