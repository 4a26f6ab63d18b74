#include "BaseClasses/CAMEvent.h"

CAMEvent::CAMEvent(BOOL manualReset, HRESULT* phr)
    : m_hEvent(::CreateEventW(nullptr, manualReset, FALSE, nullptr))
{
    if (m_hEvent == nullptr && phr != nullptr && SUCCEEDED(*phr))
        *phr = E_OUTOFMEMORY;
}

CAMEvent::CAMEvent(HRESULT* phr) : CAMEvent(FALSE, phr) {}

CAMEvent::~CAMEvent()
{
    if (m_hEvent != nullptr)
        ::CloseHandle(m_hEvent);
}

void CAMEvent::Set()
{
    ::SetEvent(m_hEvent);
}

void CAMEvent::Reset()
{
    ::ResetEvent(m_hEvent);
}

BOOL CAMEvent::Wait(DWORD timeoutMs)
{
    return ::WaitForSingleObject(m_hEvent, timeoutMs) == WAIT_OBJECT_0;
}
