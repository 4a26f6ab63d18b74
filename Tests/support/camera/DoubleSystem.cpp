// Discovery: one interface with the cameras of the script.

#include "VxDSSource/camera/VxDeviceInfo.h"
#include "VxDSSource/camera/VxInterface.h"
#include "VxDSSource/camera/VxSystem.h"

#include "support/camera/CameraDouble.h"

namespace {

class DoubleDeviceInfo final : public VxDeviceInfo {
public:
    explicit DoubleDeviceInfo(ScriptedDeviceInfo script) : m_script(std::move(script)) {}

    [[nodiscard]] VxString GetConnectionID() const override { return m_script.connectionId; }
    [[nodiscard]] VxString GetModelName() const override { return m_script.modelName; }
    [[nodiscard]] VxString GetManufacturerName() const override { return {}; }
    [[nodiscard]] VxString GetSerialNumber() const override { return {}; }
    [[nodiscard]] VxString GetUserDefinedName() const override { return {}; }
    [[nodiscard]] VxString GetIPAddress() const override { return {}; }
    [[nodiscard]] VxDeviceInfoType GetType() const override
    {
        return static_cast<VxDeviceInfoType>(m_script.type);
    }
    [[nodiscard]] bool IsConfigurationValid() const override { return m_script.isConfigurationValid; }

private:
    ScriptedDeviceInfo m_script;
};

class DoubleInterface final : public VxInterface {
public:
    explicit DoubleInterface(const std::vector<ScriptedDeviceInfo>& found)
    {
        for (const ScriptedDeviceInfo& each : found)
            m_devices.push_back(std::make_unique<DoubleDeviceInfo>(each));
    }

    [[nodiscard]] VxString GetDisplayName() const override { return "double (127.0.0.1)"; }
    [[nodiscard]] std::size_t GetDeviceCount() const override { return m_devices.size(); }
    [[nodiscard]] const VxDeviceInfo* GetDeviceInfo(std::size_t index) const override
    {
        return index < m_devices.size() ? m_devices[index].get() : nullptr;
    }

private:
    std::vector<std::unique_ptr<DoubleDeviceInfo>> m_devices;
};

} // namespace

class VxSystemImpl {
public:
    std::unique_ptr<DoubleInterface> host;
};

VxSystem::VxSystem() : m_impl(std::make_unique<VxSystemImpl>()) {}
VxSystem::~VxSystem() = default;

void VxSystem::SetDetectionTimeout(std::uint32_t timeoutMs)
{
    TheCamera().log.Add(CallKind::Action, "system.SetDetectionTimeout(" + std::to_string(timeoutMs) + ")");
}

VxResult VxSystem::Find()
{
    TheCamera().log.Add(CallKind::Action, "system.Find");
    m_impl->host = std::make_unique<DoubleInterface>(TheCamera().found);
    return VxResult::Ok();
}

std::size_t VxSystem::GetInterfaceCount() const
{
    return m_impl->host != nullptr ? 1 : 0;
}

const VxInterface* VxSystem::GetInterface(std::size_t index) const
{
    return index == 0 ? m_impl->host.get() : nullptr;
}
