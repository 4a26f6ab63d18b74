#pragma once

#include <windows.h>

#include <atomic>

namespace vxds {

/// Serialises connection changes, settings that act at once, and frame production.
///
/// Its owner may take it again. It is the first lock in the module's order: whoever holds it may take the
/// filter's state lock, the camera link's lock or the format's lock, and nobody waits for it without limit
/// while holding one of those.
///
/// Owner:  VxDSStream, by value.
/// Thread: any.
class AcquisitionMutex {
public:
    /// Throws std::system_error when the system gives no mutex.
    AcquisitionMutex();
    ~AcquisitionMutex();
    AcquisitionMutex(const AcquisitionMutex&) = delete;
    AcquisitionMutex& operator=(const AcquisitionMutex&) = delete;

    /// Holds the mutex for one scope.
    class Lock {
    public:
        /// Waits without limit: for one frame at most, whose wait for a buffer lasts up to 1000 ms. Frame
        /// production gives way between buffers.
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
    [[nodiscard]] bool IsWanted() const { return m_waiting.load() > 0; }

private:
    HANDLE m_handle;
    std::atomic<int> m_waiting = 0;
};

} // namespace vxds
