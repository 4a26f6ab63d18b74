#include "VxDSSource/camera/VxDevice.h"

#include "VxCamera/surface/GevDevice.h"
#include "VxCamera/surface/NoThrow.h"

VxDevice* VxDevice::CreateAndConnect(const VxString& connectionId, VxResult* result)
{
    std::unique_ptr<GevDevice> device;
    *result = NoThrow([&]() -> VxResult {
        auto connected = GevDevice::Connect(connectionId);
        if (!connected)
            return connected.Error();
        device = *std::move(connected);
        return VxResult::Ok();
    });
    return device.release(); // to be given back through Free
}

void VxDevice::Free(VxDevice* device)
{
    delete device;
}
