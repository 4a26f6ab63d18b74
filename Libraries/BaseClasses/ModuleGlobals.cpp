#include "BaseClasses/ModuleGlobals.h"

HINSTANCE g_hInst = nullptr;
DWORD g_amPlatform = 0;
OSVERSIONINFO g_osInfo = {};
