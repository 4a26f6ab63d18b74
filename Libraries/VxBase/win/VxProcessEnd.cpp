#include "VxBase/VxProcessEnd.h"

#include <windows.h>

namespace {

using Question = BOOLEAN(NTAPI*)();

/// The system's own question, which the compiler's headers do not declare.
/// @return  null where the system does not know it
Question FindQuestion()
{
    const HMODULE system = ::GetModuleHandleW(L"ntdll.dll");
    return system == nullptr ? nullptr
                             : reinterpret_cast<Question>(reinterpret_cast<void*>(
                                   ::GetProcAddress(system, "RtlDllShutdownInProgress")));
}

// Found once: it is asked for every frame.
const Question g_isShuttingDown = FindQuestion();

} // namespace

bool VxProcessEnd::IsSystemEndingProcess()
{
    return g_isShuttingDown != nullptr && g_isShuttingDown() != FALSE;
}
