#include "system/CameraHolder.h"

#include "VxDSSource/camera/VxDeviceGEV.h"
#include "VxDSSource/camera/VxGenCommand.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

#include <windows.h>

#include <cstdio>

namespace {

/// @return  whether it went well; tells when it did not
bool IsFine(const char* step, const VxResult& result)
{
    if (!result.IsOK())
        std::printf("%s failed: %s\n", step, result.GetDescription().GetAscii());
    return result.IsOK();
}

} // namespace

bool HoldCamera(const std::string& camera, const std::string& destination, std::uint16_t port)
{
    VxResult connected;
    VxDevice* const device = VxDevice::CreateAndConnect(VxString(camera), &connected);
    auto* const gev = dynamic_cast<VxDeviceGEV*>(device);
    const bool isStreaming =
        IsFine("connect", connected) && gev != nullptr &&
        IsFine("destination", gev->SetStreamDestination(VxString(destination), port, 0)) &&
        IsFine("enable", device->StreamEnable(0)) &&
        IsFine("start", device->GetParameters()->ExecuteCommand("AcquisitionStart"));
    if (isStreaming) {
        std::puts("streaming");
        std::fflush(stdout); // the test waits for it
        ::Sleep(INFINITE);
    }
    VxDevice::Free(device);
    return false;
}
