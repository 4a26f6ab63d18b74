#pragma once

#include "BaseClasses/ModuleGlobals.h"

#include <objbase.h>

// The entry points of a module. DllGetClassObject and DllCanUnloadNow, which objbase.h declares, are defined
// here for the module's table of classes; the module's export list names them.

/// What the module's DllMain calls. Always TRUE.
extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE instance, ULONG reason, LPVOID reserved);
