#pragma once

#include <windows.h>

/// A lock that its owning thread may take again.
///
/// Owner:  the object whose state it guards.
/// Thread: any.
class CCritSec {
public:
    CCritSec() { ::InitializeCriticalSection(&m_CritSec); }
    ~CCritSec() { ::DeleteCriticalSection(&m_CritSec); }
    CCritSec(const CCritSec&) = delete;
    CCritSec& operator=(const CCritSec&) = delete;

    void Lock() { ::EnterCriticalSection(&m_CritSec); }
    /// @return  false when another thread has it
    [[nodiscard]] bool TryLock() { return ::TryEnterCriticalSection(&m_CritSec) != FALSE; }
    void Unlock() { ::LeaveCriticalSection(&m_CritSec); }

private:
    CRITICAL_SECTION m_CritSec;
};
