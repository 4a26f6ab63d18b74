#pragma once

#include <guiddef.h>

/// Class identifiers of the module: chosen once, never changed.

/// The filter "Vexa DirectShow Source": {939C9A55-207C-4024-8B29-38D22449994D}
inline constexpr GUID CLSID_VxDSSource = {
    0x939C9A55, 0x207C, 0x4024, {0x8B, 0x29, 0x38, 0xD2, 0x24, 0x49, 0x99, 0x4D}};

/// The property page "Parameters": {90172374-9B27-4E5D-BFCF-B61D5BEF002C}
inline constexpr GUID CLSID_ParametersPage = {
    0x90172374, 0x9B27, 0x4E5D, {0xBF, 0xCF, 0xB6, 0x1D, 0x5B, 0xEF, 0x00, 0x2C}};

/// The property page "Browser": {35B3E182-5E01-4F6D-A3A2-7DB1CD4290B3}
inline constexpr GUID CLSID_BrowserPage = {
    0x35B3E182, 0x5E01, 0x4F6D, {0xA3, 0xA2, 0x7D, 0xB1, 0xCD, 0x42, 0x90, 0xB3}};

/// The property page "About": {B22E5C08-89F5-4FDF-8288-D3C91D2268C2}
inline constexpr GUID CLSID_AboutPage = {
    0xB22E5C08, 0x89F5, 0x4FDF, {0x82, 0x88, 0xD3, 0xC9, 0x1D, 0x22, 0x68, 0xC2}};

/// The type library of the control interface: {865A9CD3-0585-4753-8DF7-9ECE744FAF74}
inline constexpr GUID LIBID_VxDSSource = {
    0x865A9CD3, 0x0585, 0x4753, {0x8D, 0xF7, 0x9E, 0xCE, 0x74, 0x4F, 0xAF, 0x74}};

/// Name of the filter wherever people see it.
inline constexpr wchar_t kFilterName[] = L"Vexa DirectShow Source";
