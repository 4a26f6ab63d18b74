#pragma once

#include <windows.h>

#include <objbase.h>

// The entry points of a module. DllGetClassObject and DllCanUnloadNow, which objbase.h declares, are defined
// here for the module's table of classes; the module's export list names them.

/// The module's handle, system and system version, from the time it was loaded.
extern HINSTANCE g_hInst;
extern DWORD g_amPlatform;
extern OSVERSIONINFO g_osInfo;

/// What the module's DllMain calls. Always TRUE.
extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE instance, ULONG reason, LPVOID reserved);
