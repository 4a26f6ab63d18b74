#pragma once

#include "VxDSSource/camera/VxDevice.h"

/// A USB3 Vision camera; only ever tested for at run time.
///
/// Owner and thread: see VxDevice.
class VxDeviceU3V : public VxDevice {
protected:
    ~VxDeviceU3V() override = default;
};
