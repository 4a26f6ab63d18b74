#pragma once

#include <windows.h>

/// An unnamed event, not set at first.
///
/// Owner:  the object whose threads it joins.
/// Thread: any.
class CAMEvent {
public:
    /// @param phr  becomes E_OUTOFMEMORY when the event cannot be made and *phr was still a success
    explicit CAMEvent(BOOL manualReset = FALSE, HRESULT* phr = nullptr);
    /// Auto-reset.
    explicit CAMEvent(HRESULT* phr);
    ~CAMEvent();
    CAMEvent(const CAMEvent&) = delete;
    CAMEvent& operator=(const CAMEvent&) = delete;

    operator HANDLE() const { return m_hEvent; } // NOLINT(google-explicit-constructor)
    void Set();
    void Reset();
    /// @return  TRUE when the event was set within the time; an auto-reset event is consumed
    BOOL Wait(DWORD timeoutMs = INFINITE);
    /// Wait without waiting: consumes an auto-reset event.
    BOOL Check() { return Wait(0); }

protected:
    HANDLE m_hEvent; // null when creation failed
};
