#pragma once

#include <windows.h>

namespace vxds {

// Published identifiers that the tool chain does not give: all of them are here and nowhere else. Both are
// made of four characters and the tail that all such identifiers share. Fixed.

/// MEDIASUBTYPE_H264, 'H264': declared in wmcodecdsp.h alone, and in no library that the module links.
inline constexpr GUID kSubtypeH264 = {
    0x34363248, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

/// MEDIATYPE_URL_STREAM, 'urls': uuids.h has this value, but the object in libstrmiids carries that of
/// MEDIATYPE_LMRT.
inline constexpr GUID kMajorTypeUrlStream = {
    0x736C7275, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

} // namespace vxds
