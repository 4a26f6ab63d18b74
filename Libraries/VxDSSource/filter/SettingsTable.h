#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vxds {

/// The settings, in the order in which they are written to and read from a configuration.
enum class Setting : std::size_t {
    Role,
    UnicastPort,
    MulticastAddress,
    MulticastPort,
    DiagnosticsEnabled,
    DeviceId,
    ParamSource,
    ParamChannel,
    BufferCount,
    DefaultBufferSize,
    DropThreshold,
    Width,
    Height,
    OutputPixelType,
    KernelSize,
    ZoomValue,
    OutputWidth,
    OutputHeight,
};

inline constexpr std::size_t kSettingCount = 18;

enum class SettingType {
    Unsigned, ///< 32 bits
    Signed,   ///< 32 bits
    Boolean,
    Text,
};

/// What a setter accepts. A configuration that is restored is not tested: it holds what a setter once took.
enum class SettingRule {
    Any,           ///< every value
    ZeroOrOne,     ///< anything else is refused
    MedianKernel,  ///< 0, 3 or 5; anything else is refused
    AtMostTen,     ///< larger values are stored as 10; there is no lower bound
    AtLeastOne,    ///< set as a pair with its neighbour; refused when either is below 1
    FollowsOutput, ///< no setter: it follows the camera and the output size
};

/// One setting: everything the module knows about it.
struct SettingRow {
    Setting setting;
    const char* key; ///< its name in configurations
    SettingType type;
    const char* unit; ///< empty for a plain number or text
    std::uint32_t defaultNumber;
    const wchar_t* defaultText;
    SettingRule rule;
};

/// All rows, indexed by Setting.
extern const std::array<SettingRow, kSettingCount> kSettingRows;

[[nodiscard]] const SettingRow& RowOf(Setting setting);

/// Values of Setting::Role.
inline constexpr std::uint32_t kRoleController = 0; ///< controls the camera and receives its stream
inline constexpr std::uint32_t kRoleUnicast = 1;    ///< receives what another host directs to a port
inline constexpr std::uint32_t kRoleMulticast = 2;  ///< joins a group that another host feeds

/// Values of Setting::OutputPixelType. Others can be restored; they match no media type.
inline constexpr std::uint32_t kOutputRgb = 0;    ///< RGB, bottom-up, 24 or 32 bits
inline constexpr std::uint32_t kOutputYuv422 = 1; ///< YUY2

} // namespace vxds
