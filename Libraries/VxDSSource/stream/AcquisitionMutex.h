#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>

namespace vxds {

/// Serialises connection changes, settings that act at once, and frame production.
///
/// A recursive mutex with a time-out, made of the system's slim lock and condition variables and not of a
/// kernel mutex, because every frame takes it: see Docs/decisions/0008. Threads that wait get it in the order
/// in which they came; frame production, which takes it again at once, cannot overtake them.
///
/// When the process is ending (VxProcessEnd) whoever asks has it: the system may have ended its owner.
///
/// It is the first lock in the module's order: whoever holds it may take the filter's state lock, the camera
/// link's lock or the format's lock, and nobody waits for it without limit while holding one of those.
///
/// Owner:  VxDSStream, by value.
/// Thread: any.
class AcquisitionMutex {
public:
    AcquisitionMutex() = default;
    AcquisitionMutex(const AcquisitionMutex&) = delete;
    AcquisitionMutex& operator=(const AcquisitionMutex&) = delete;

    /// Holds the mutex for one scope.
    class Lock {
    public:
        /// Waits without limit: for one frame at most, whose wait for a buffer lasts up to 1000 ms (frame
        /// production gives way between buffers), and for every connect that came earlier, each of which may
        /// last as long as the camera's commands do.
        explicit Lock(AcquisitionMutex& mutex);
        /// Waits so long; see IsHeld.
        Lock(AcquisitionMutex& mutex, DWORD timeoutMs);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

        [[nodiscard]] bool IsHeld() const { return m_isHeld; }

    private:
        AcquisitionMutex& m_mutex; // borrowed: outlives the scope
        bool m_isHeld;
    };

    /// Whether a thread waits without limit.
    [[nodiscard]] bool IsWanted() const { return m_patient.load() > 0; }

    /// @return  how many threads wait, with and without a limit
    [[nodiscard]] std::size_t WaiterCount();

private:
    /// A thread that waits. It lives on that thread's stack until the thread has the mutex or gives up.
    struct Waiter {
        CONDITION_VARIABLE turn = CONDITION_VARIABLE_INIT;
        DWORD thread = 0;
        bool hasTurn = false;
        Waiter* next = nullptr;
    };

    bool Acquire(DWORD timeoutMs);
    bool WaitForTurn(Waiter& waiter, DWORD timeoutMs);
    void Release();
    void Remove(const Waiter& waiter);

    SRWLOCK m_state = SRWLOCK_INIT; // guards what follows; held for some instructions only
    DWORD m_owner = 0;              // thread id; 0: nobody, no thread has that id
    unsigned m_depth = 0;           // how often the owner has taken it
    Waiter* m_first = nullptr;      // borrowed, in the order of arrival
    std::atomic<int> m_patient =
        0; // threads in the row that wait without limit; written under the state lock
};

} // namespace vxds
