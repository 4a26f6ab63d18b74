#pragma once

#include <windows.h>

#include <strmif.h>

/// What a filter says about itself when it is registered. The data is static: registration only reads it.
using AMOVIESETUP_MEDIATYPE = REGPINTYPES;
using PAMOVIESETUP_MEDIATYPE = REGPINTYPES*;
using AMOVIESETUP_PIN = REGFILTERPINS;
using PAMOVIESETUP_PIN = REGFILTERPINS*;

struct AMOVIESETUP_FILTER {
    const CLSID* clsID;
    const WCHAR* strName;
    DWORD dwMerit;
    UINT nPins;
    const AMOVIESETUP_PIN* lpPin;
};
using PAMOVIESETUP_FILTER = AMOVIESETUP_FILTER*;
using LPAMOVIESETUP_FILTER = AMOVIESETUP_FILTER*;
