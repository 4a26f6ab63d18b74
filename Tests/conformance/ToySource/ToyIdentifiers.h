#pragma once

#include <guiddef.h>

/// Class identifiers of the toy: they belong to these tests and to nothing else.

/// {2B5C1F5E-7A53-4B0C-9C4B-52B0B6E5A3D1}
inline constexpr GUID CLSID_ToySource = {
    0x2B5C1F5E, 0x7A53, 0x4B0C, {0x9C, 0x4B, 0x52, 0xB0, 0xB6, 0xE5, 0xA3, 0xD1}};

/// {5D1E3A0B-6C0E-4C86-8E0B-0C6F6E1F7B42}
inline constexpr GUID CLSID_ToyPage = {
    0x5D1E3A0B, 0x6C0E, 0x4C86, {0x8E, 0x0B, 0x0C, 0x6F, 0x6E, 0x1F, 0x7B, 0x42}};
