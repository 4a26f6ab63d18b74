#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// Runs the system's registration tool on the module under test, as a user does.
/// @param options  for instance /u
/// @return  its exit code; MAXDWORD, which is a failure of the test, when it does not end
DWORD Regsvr32(std::vector<std::wstring> options);
