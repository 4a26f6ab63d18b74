#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"

#include <cstdint>

class VxGenParameterArray;

/// A camera under this host's control.
///
/// Owner:  made by CreateAndConnect, given back with Free and in no other way.
/// Thread: any; serialised inside. A lost link is noticed within the camera's heartbeat time-out; from then
///         on IsConnected is false and every operation fails at once.
class VxDevice {
public:
    VxDevice(const VxDevice&) = delete;
    VxDevice& operator=(const VxDevice&) = delete;

    /// Finds the camera, takes control of it and loads its feature tree.
    ///
    /// @param connectionId  MAC address (either separator, any case), dotted IP address, serial number or
    ///                      user-defined name
    /// @param[out] result   OK, or why not: NOT_FOUND (no camera answered), AMBIGUOUS, ACCESS_DENIED (another
    ///                      application controls it), INVALID_CONFIGURATION, INVALID_DATA (its description),
    ///                      ...; must not be null
    /// @return  a VxDeviceGEV or VxDeviceU3V, or null. One whose result is not OK must still be freed.
    [[nodiscard]] static VxDevice* CreateAndConnect(const VxString& connectionId, VxResult* result);

    /// Disconnects if needed and disposes of the device; null is allowed. Nobody else may use the device or
    /// its arrays any more: where another thread may be in a call, Disconnect first, which ends that call,
    /// and wait for the thread.
    static void Free(VxDevice* device);

    [[nodiscard]] virtual bool IsConnected() const = 0;

    /// Gives control back, within two seconds whatever the camera does; calls of other threads that are under
    /// way fail with NOT_CONNECTED then. The object and its arrays stay valid until Free.
    virtual VxResult Disconnect() = 0;

    /// The camera's feature tree; borrowed, never null. Once the device is not connected any more, which
    /// features there are can still be asked; each read and write of one fails with the reason, whether its
    /// value is known or not.
    [[nodiscard]] virtual VxGenParameterArray* GetParameters() = 0;

    /// Features of the link (time-outs, retries, heartbeat); borrowed, never null, usable without a
    /// connection.
    [[nodiscard]] virtual VxGenParameterArray* GetCommunicationParameters() = 0;

    /// @return  bytes of one image as the camera reports them; 0 when it cannot be read, as of a lost camera
    [[nodiscard]] virtual std::uint32_t GetPayloadSize() = 0;

    /// Locks the features that must not change while streaming ("TLParamsLocked"), where the camera has them.
    /// @param channel  stream channel, from 0
    virtual VxResult StreamEnable(std::uint32_t channel) = 0;
    virtual VxResult StreamDisable(std::uint32_t channel) = 0;

protected:
    VxDevice() = default;
    virtual ~VxDevice() = default; // through Free only
};
