#include "vxgrab/StopSignal.h"

#include "VxBase/VxMutex.h"

namespace vxgrab {
namespace {

// Fixed by Windows: when the window is closed or the user logs off, the process is ended as soon as the
// handler returns, and after five seconds in any case.
constexpr DWORD kClosingLimitMs = 5000;

VxMutex currentMutex;
StopSignal* current VX_GUARDED_BY(currentMutex) = nullptr; // the handler has no argument of its own

} // namespace

StopSignal::StopSignal()
{
    {
        const VxLock lock(currentMutex);
        current = this;
    }
    ::SetConsoleCtrlHandler(&StopSignal::OnControl, TRUE);
}

StopSignal::~StopSignal()
{
    ::SetConsoleCtrlHandler(&StopSignal::OnControl, FALSE);
    m_ended.Set();
    const VxLock lock(currentMutex);
    current = nullptr;
}

BOOL WINAPI StopSignal::OnControl(DWORD control)
{
    HANDLE ended = nullptr;
    {
        const VxLock lock(currentMutex);
        if (current == nullptr)
            return FALSE;
        current->m_wanted.Set();
        // A handle of our own: the object may be gone before the wait below begins.
        ::DuplicateHandle(::GetCurrentProcess(), current->m_ended.Handle(), ::GetCurrentProcess(), &ended, 0,
                          FALSE, DUPLICATE_SAME_ACCESS);
    }
    if (control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT && ended != nullptr)
        ::WaitForSingleObject(ended, kClosingLimitMs);
    if (ended != nullptr)
        ::CloseHandle(ended);
    return TRUE;
}

} // namespace vxgrab
