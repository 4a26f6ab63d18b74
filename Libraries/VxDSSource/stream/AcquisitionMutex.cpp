#include "VxDSSource/stream/AcquisitionMutex.h"

#include <system_error>

namespace vxds {

namespace {

bool Wait(HANDLE mutex, DWORD timeoutMs)
{
    // Abandoned: a thread ended while holding it. What it guards is whole between two statements, so go on.
    const DWORD outcome = ::WaitForSingleObject(mutex, timeoutMs);
    return outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;
}

} // namespace

AcquisitionMutex::AcquisitionMutex() : m_handle(::CreateMutexW(nullptr, FALSE, nullptr))
{
    if (m_handle == nullptr)
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CreateMutex");
}

AcquisitionMutex::~AcquisitionMutex()
{
    ::CloseHandle(m_handle);
}

AcquisitionMutex::Lock::Lock(AcquisitionMutex& mutex) : m_mutex(mutex)
{
    ++m_mutex.m_waiting;
    m_isHeld = Wait(m_mutex.m_handle, INFINITE);
    --m_mutex.m_waiting;
}

AcquisitionMutex::Lock::Lock(AcquisitionMutex& mutex, DWORD timeoutMs)
    : m_mutex(mutex), m_isHeld(Wait(mutex.m_handle, timeoutMs))
{
}

AcquisitionMutex::Lock::~Lock()
{
    if (m_isHeld)
        ::ReleaseMutex(m_mutex.m_handle);
}

} // namespace vxds
