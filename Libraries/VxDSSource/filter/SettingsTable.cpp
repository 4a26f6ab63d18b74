#include "VxDSSource/filter/SettingsTable.h"

namespace vxds {

namespace {

// Chosen: one 16-bit image of 1920 x 1080, the largest common size of a camera whose payload size is not
// known.
constexpr std::uint32_t kDefaultBufferBytes = 1920 * 1080 * 2;

using enum Setting;
using enum SettingType;
using enum SettingRule;

} // namespace

const std::array<SettingRow, kSettingCount> kSettingRows = {{
    {Role, "role", Unsigned, "", kRoleController, L"", Any},
    {UnicastPort, "unicastport", Unsigned, "", 0, L"", Any},
    {MulticastAddress, "multicastip", Text, "", 0, L"239.192.1.1", Any},
    {MulticastPort, "multicastport", Unsigned, "", 1042, L"", Any},
    {DiagnosticsEnabled, "diagnosticsenabled", Boolean, "", 0, L"", Any},
    {DeviceId, "deviceid", Text, "", 0, L"", Any},
    {ParamSource, "paramsource", Text, "", 0, L"", Any},
    {ParamChannel, "paramchannel", Unsigned, "", 0, L"", Any},
    {BufferCount, "buffercount", Unsigned, "buffers", 16, L"", Any},
    {DefaultBufferSize, "defaultbuffersize", Unsigned, "bytes", kDefaultBufferBytes, L"", Any},
    {DropThreshold, "dropthreshold", Unsigned, "buffers", 1, L"", Any},
    {Width, "width", Unsigned, "pixels", 1280, L"", FollowsOutput},
    {Height, "height", Unsigned, "pixels", 720, L"", FollowsOutput},
    {OutputPixelType, "outputpixeltype", Unsigned, "", kOutputRgb, L"", ZeroOrOne},
    {KernelSize, "kernelsize", Signed, "pixels", 0, L"", MedianKernel},
    {ZoomValue, "zoomvalue", Signed, "", 0, L"", AtMostTen},
    {OutputWidth, "outputwidth", Signed, "pixels", 0, L"", AtLeastOne},
    {OutputHeight, "outputheight", Signed, "pixels", 0, L"", AtLeastOne},
}};

const SettingRow& RowOf(Setting setting)
{
    return kSettingRows[static_cast<std::size_t>(setting)];
}

} // namespace vxds
