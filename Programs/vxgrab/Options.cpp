#include "vxgrab/Options.h"

namespace vxgrab {

bool FilterSettings::IsEmpty() const
{
    return !deviceId && !role && !unicastPort && !multicastAddress && !multicastPort && !source && !channel &&
           !bufferCount && !bufferBytes && !dropThreshold && !pixelType && !kernelSize && !zoom &&
           !outputWidthPx && !outputHeightPx && !diagnostics;
}

} // namespace vxgrab
