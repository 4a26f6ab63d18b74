#pragma once

#include "BaseClasses/CMediaType.h"
#include "VxDSSource/stream/PictureSize.h"

#include <cstdint>

namespace vxds {

/// The fixed nominal frame rate of every media type: 30 frames a second, in 100 ns units.
inline constexpr REFERENCE_TIME kNominalTimePerFrame = 333333;

/// How many media types the pin offers.
inline constexpr int kOfferedTypeCount = 4;

/// Bytes of a bitmap without any padding of rows; 0xFFFFFFFF when it does not fit 32 bits.
/// @param size  the height counts without its sign, as does the width
[[nodiscard]] std::uint32_t UnpaddedBitmapBytes(PictureSize size, std::uint32_t bitCount);

/// Media type number position: RGB24, RGB32, ARGB32, YUY2.
/// @param position  0 to kOfferedTypeCount - 1
/// @return  false when there is no memory
[[nodiscard]] bool BuildOfferedType(int position, PictureSize size, CMediaType& type);

/// Whether the output family admits a type; its size is not looked at.
/// @param outputPixelType  value of Setting::OutputPixelType
[[nodiscard]] bool IsAcceptedType(const AM_MEDIA_TYPE& type, std::uint32_t outputPixelType);

/// The type that follows `current` when the size of the delivered frames changes: the same major type and
/// subtype in a block of the shorter form. Its image size still counts with the old bit count, in 32-bit
/// arithmetic, while the new bit count is that of the family: both are fixed,
/// part of the pin's contract with renderers.
/// @return  false when there is no memory
[[nodiscard]] bool BuildResizedType(const AM_MEDIA_TYPE& current, PictureSize size,
                                    std::uint32_t outputPixelType, CMediaType& type);

/// The one capability the pin reports.
/// @return  false when there is no memory
[[nodiscard]] bool BuildCapabilityType(const AM_MEDIA_TYPE& current, PictureSize size,
                                       std::uint32_t outputPixelType, CMediaType& type);
[[nodiscard]] VIDEO_STREAM_CONFIG_CAPS CapabilityOf(PictureSize size);

} // namespace vxds
