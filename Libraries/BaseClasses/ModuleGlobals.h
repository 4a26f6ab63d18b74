#pragma once

#include <windows.h>

// Facts about the module from the time it was loaded, set by DllEntryPoint and only read afterwards.

extern HINSTANCE g_hInst;
extern DWORD g_amPlatform; // VER_PLATFORM_WIN32_NT
extern OSVERSIONINFO g_osInfo;
