#include "BaseClasses/CAMThread.h"

#include "BaseClasses/CAutoLock.h"
#include "VxBase/VxRunningThread.h"

#include <objbase.h>

CAMThread::CAMThread(HRESULT* phr)
    : m_EventSend(TRUE, phr), m_EventComplete(FALSE, phr), m_EventEnded(TRUE, phr)
{
}

CAMThread::~CAMThread()
{
    Close();
}

BOOL CAMThread::Create()
{
    const CAutoLock lock(&m_AccessLock);
    if (ThreadExists())
        return FALSE;

    m_EventEnded.Reset();
    m_hThread = ::CreateThread(nullptr, 0, &CAMThread::InitialThreadProc, this, 0, nullptr);
    return m_hThread != nullptr;
}

DWORD CAMThread::CallWorker(DWORD command)
{
    const CAutoLock lock(&m_AccessLock);
    if (!ThreadExists())
        return static_cast<DWORD>(E_FAIL);

    m_dwParam = command;
    m_EventSend.Set();

    // The reply wins over the end: a worker may answer its last command and end. The thread itself is waited
    // for as well: a worker that was ended by force, as the system does when the process ends, has set no
    // event.
    const HANDLE answers[] = {m_EventComplete, m_EventEnded, m_hThread};
    if (::WaitForMultipleObjects(ARRAYSIZE(answers), answers, FALSE, INFINITE) != WAIT_OBJECT_0) {
        m_EventSend.Reset();
        return static_cast<DWORD>(E_FAIL);
    }
    return m_dwReturnVal;
}

void CAMThread::Close()
{
    const HANDLE thread = ::InterlockedExchangePointer(&m_hThread, nullptr);
    if (thread == nullptr)
        return;
    ::WaitForSingleObject(thread, INFINITE);
    ::CloseHandle(thread);
}

BOOL CAMThread::ThreadExists() const
{
    return m_hThread != nullptr;
}

BOOL CAMThread::HasThreadEnded()
{
    return ThreadExists() && (m_EventEnded.Check() || ::WaitForSingleObject(m_hThread, 0) == WAIT_OBJECT_0);
}

DWORD CAMThread::GetRequest()
{
    m_EventSend.Wait();
    return m_dwParam;
}

BOOL CAMThread::CheckRequest(DWORD* command)
{
    if (!m_EventSend.Check())
        return FALSE;
    if (command != nullptr)
        *command = m_dwParam;
    return TRUE;
}

void CAMThread::Reply(DWORD result)
{
    m_dwReturnVal = result;
    // In this order: the client may send its next command as soon as it wakes.
    m_EventSend.Reset();
    m_EventComplete.Set();
}

DWORD WINAPI CAMThread::InitialThreadProc(LPVOID thread)
{
    const VxRunningThread counted;
    auto* const self = static_cast<CAMThread*>(thread);
    const HRESULT com = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED | COINIT_DISABLE_OLE1DDE);

    DWORD result = static_cast<DWORD>(E_UNEXPECTED);
    try {
        result = self->ThreadProc();
    } catch (...) {
        // An exception that leaves a thread ends the process. The next command finds that the worker has
        // ended.
    }

    if (SUCCEEDED(com))
        ::CoUninitialize();
    self->m_EventEnded.Set();
    return result;
}
