#include "VxDSSource/camera/VxStreamU3V.h"

#include "VxCamera/surface/VxStreamImpl.h"

VxStreamU3V::VxStreamU3V() : VxStream(std::make_unique<VxStreamImpl>()) {}

VxStreamU3V::~VxStreamU3V() = default;

VxResult VxStreamU3V::Open(const VxString& connectionId)
{
    return VxResult(VxError::NotSupported,
                    "camera \"" + connectionId.Narrow() + "\": this version receives no USB3 Vision streams");
}

VxStreamType VxStreamU3V::GetType() const
{
    return VxStreamType::U3v;
}
