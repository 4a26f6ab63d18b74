// The camera itself.

#include "VxDSSource/camera/VxDeviceGEV.h"
#include "VxDSSource/camera/VxDeviceU3V.h"

#include "support/camera/CameraDouble.h"

#include <gtest/gtest.h>

namespace {

/// A camera over one of the two kinds of link.
template <typename Base>
class DoubleDevice : public Base {
public:
    DoubleDevice() { ++TheCamera().liveDevices; }
    ~DoubleDevice() override { --TheCamera().liveDevices; }

    [[nodiscard]] bool IsConnected() const override
    {
        TheCamera().log.Add(CallKind::Query, "device.IsConnected");
        return TheCamera().isConnected;
    }

    VxResult Disconnect() override
    {
        TheCamera().isConnected = false;
        return TheCamera().Act("device.Disconnect");
    }

    [[nodiscard]] VxGenParameterArray* GetParameters() override { return TheCamera().device.get(); }
    [[nodiscard]] VxGenParameterArray* GetCommunicationParameters() override
    {
        return TheCamera().communication.get();
    }

    [[nodiscard]] std::uint32_t GetPayloadSize() override
    {
        TheCamera().log.Add(CallKind::Action, "device.GetPayloadSize");
        return TheCamera().payloadBytes;
    }

    VxResult StreamEnable(std::uint32_t channel) override
    {
        return TheCamera().Act("device.StreamEnable(" + std::to_string(channel) + ")");
    }

    VxResult StreamDisable(std::uint32_t channel) override
    {
        return TheCamera().Act("device.StreamDisable(" + std::to_string(channel) + ")");
    }
};

class DoubleDeviceGEV final : public DoubleDevice<VxDeviceGEV> {
public:
    VxResult SetStreamDestination(const VxString& ipAddress, std::uint16_t port,
                                  std::uint32_t channel) override
    {
        return TheCamera().Act("device.SetStreamDestination(" + ipAddress.Narrow() + ", " +
                               std::to_string(port) + ", " + std::to_string(channel) + ")");
    }
};

class DoubleDeviceU3V final : public DoubleDevice<VxDeviceU3V> {};

} // namespace

VxDevice* VxDevice::CreateAndConnect(const VxString& connectionId, VxResult* result)
{
    CameraDouble& camera = TheCamera();
    camera.log.Add(CallKind::Action, "CreateAndConnect(" + connectionId.Narrow() + ")");
    if (camera.onConnect)
        camera.onConnect();
    *result = camera.connecting;
    camera.isConnected = camera.connecting.IsOK() && camera.kind != DeviceKind::None;
    switch (camera.kind) {
    case DeviceKind::Gev:
        return new DoubleDeviceGEV;
    case DeviceKind::U3v:
        return new DoubleDeviceU3V;
    case DeviceKind::None:
        break;
    }
    return nullptr;
}

void VxDevice::Free(VxDevice* device)
{
    TheCamera().log.Add(CallKind::Action, "VxDevice::Free");
    if (auto* const gev = dynamic_cast<DoubleDeviceGEV*>(device))
        delete gev;
    else if (auto* const u3v = dynamic_cast<DoubleDeviceU3V*>(device))
        delete u3v;
    else
        ADD_FAILURE() << "freed what was never given";
}
