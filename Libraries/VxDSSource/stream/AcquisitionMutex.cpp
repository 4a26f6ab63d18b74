#include "VxDSSource/stream/AcquisitionMutex.h"

#include "VxBase/VxProcessEnd.h"

namespace vxds {

namespace {

/// The system's slim lock for one scope.
class StateLock {
public:
    explicit StateLock(SRWLOCK& lock) : m_lock(lock) { ::AcquireSRWLockExclusive(&m_lock); }
    ~StateLock() { ::ReleaseSRWLockExclusive(&m_lock); }
    StateLock(const StateLock&) = delete;
    StateLock& operator=(const StateLock&) = delete;

private:
    SRWLOCK& m_lock;
};

} // namespace

bool AcquisitionMutex::Acquire(DWORD timeoutMs)
{
    // The system has ended all other threads, perhaps one that owned this mutex, or the slim lock, which
    // would never be let go. A kernel mutex would count as abandoned: whoever asks gets it.
    if (VxProcessEnd::HasBegun())
        return true;
    const DWORD self = ::GetCurrentThreadId();
    const StateLock state(m_state);
    if (m_owner == self || m_owner == 0) { // with nobody as owner nobody waits: Release hands it on
        m_owner = self;
        ++m_depth;
        return true;
    }
    if (timeoutMs == 0)
        return false;
    Waiter waiter;
    waiter.thread = self;
    Waiter** last = &m_first;
    while (*last != nullptr)
        last = &(*last)->next;
    *last = &waiter;
    const int patient = timeoutMs == INFINITE ? 1 : 0;
    m_patient += patient;
    const bool hasTurn = WaitForTurn(waiter, timeoutMs);
    m_patient -= patient;
    return hasTurn;
}

/// Called, and returns, with the state locked. A turn that comes with the end of the time is taken.
bool AcquisitionMutex::WaitForTurn(Waiter& waiter, DWORD timeoutMs)
{
    const ULONGLONG began = ::GetTickCount64();
    while (!waiter.hasTurn) {
        DWORD rest = INFINITE;
        if (timeoutMs != INFINITE) {
            const ULONGLONG waited = ::GetTickCount64() - began; // a condition variable may wake early
            rest = waited < timeoutMs ? static_cast<DWORD>(timeoutMs - waited) : 0;
        }
        if (rest == 0) {
            Remove(waiter);
            return false;
        }
        ::SleepConditionVariableSRW(&waiter.turn, &m_state, rest, 0);
    }
    return true;
}

void AcquisitionMutex::Remove(const Waiter& waiter)
{
    Waiter** place = &m_first;
    while (*place != &waiter)
        place = &(*place)->next;
    *place = waiter.next;
}

std::size_t AcquisitionMutex::WaiterCount()
{
    const StateLock state(m_state);
    std::size_t count = 0;
    for (const Waiter* waiter = m_first; waiter != nullptr; waiter = waiter->next)
        ++count;
    return count;
}

/// Hands the mutex to the thread that has waited longest, so that its former owner cannot take it again
/// before that thread has woken up.
void AcquisitionMutex::Release()
{
    if (VxProcessEnd::HasBegun())
        return; // nobody is left who could want it
    const StateLock state(m_state);
    if (--m_depth > 0)
        return;
    Waiter* const next = m_first;
    if (next == nullptr) {
        m_owner = 0;
        return;
    }
    m_first = next->next;
    m_owner = next->thread;
    m_depth = 1;
    next->hasTurn = true;
    ::WakeConditionVariable(&next->turn); // under the lock: the waiter is gone once it has seen its turn
}

AcquisitionMutex::Lock::Lock(AcquisitionMutex& mutex) : Lock(mutex, INFINITE) {}

AcquisitionMutex::Lock::Lock(AcquisitionMutex& mutex, DWORD timeoutMs)
    : m_mutex(mutex), m_isHeld(mutex.Acquire(timeoutMs))
{
}

AcquisitionMutex::Lock::~Lock()
{
    if (m_isHeld)
        m_mutex.Release();
}

} // namespace vxds
