#pragma once

#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxDeviceGEV.h"
#include "VxDSSource/camera/VxPipeline.h"
#include "VxDSSource/camera/VxStreamGEV.h"

#include <cstdint>
#include <memory>

struct FreeDevice {
    void operator()(VxDevice* device) const { VxDevice::Free(device); }
};
using DevicePointer = std::unique_ptr<VxDevice, FreeDevice>;

/// Connects to a camera that is there. A search is short, and a busy machine may not let the camera answer in
/// time, so a camera that was not found is searched for again, ten seconds long.
/// @return  the result of the last attempt
[[nodiscard]] VxResult ConnectPatiently(DevicePointer& device, const char* connectionId);

/// A camera, its stream and a pipeline, set up in the order in which the module does it.
///
/// Owner:  a test.
/// Thread: one.
class CameraLink {
public:
    ~CameraLink();

    /// Takes control of the camera; failures end the test.
    void Connect(const char* connectionId);
    /// Opens the stream with more patience than a user's, so that no picture is lost on a busy machine.
    void OpenStream(const char* connectionId);

    /// Starts the pipeline, then the camera.
    void Start(std::uint32_t bufferCount = 8);
    void Stop();

    /// @return  the next buffer, which must come within ten seconds; released by the next call
    [[nodiscard]] VxBuffer* Next();

    [[nodiscard]] VxGenParameterArray& Features() { return *device->GetParameters(); }
    [[nodiscard]] VxDeviceGEV& Gev() { return dynamic_cast<VxDeviceGEV&>(*device); }
    [[nodiscard]] std::int64_t Statistic(const char* name);

    DevicePointer device;
    VxStreamGEV stream;
    std::unique_ptr<VxPipeline> pipeline; // ends before its stream

private:
    VxBuffer* m_held = nullptr; // borrowed from the pipeline
};
