#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"

#include <condition_variable>
#include <optional>
#include <thread>

namespace control {

class DeviceSession;

/// Keeps a session alive, also while the application is busy with other things.
///
/// Owner:  the device. Borrows the session, which outlives it.
/// Thread: Start and Stop from one thread; runs one of its own, which waits for the next heartbeat, for
/// another timing or for Stop.
class HeartbeatThread {
public:
    /// Listens to the session's timing from now on.
    explicit HeartbeatThread(DeviceSession& session);
    ~HeartbeatThread();
    HeartbeatThread(const HeartbeatThread&) = delete;
    HeartbeatThread& operator=(const HeartbeatThread&) = delete;

    /// @return  OUT_OF_MEMORY when the system has no thread left
    VxResult Start();

    /// Waits for a heartbeat that is under way. Allowed when nothing was started.
    void Stop();

private:
    void Run();
    [[nodiscard]] std::optional<IVxClock::Time> BeatOrRetry();
    void LookAgain();

    DeviceSession& m_session;
    std::thread m_thread;
    VxMutex m_mutex;
    std::condition_variable_any m_changed;
    bool m_isStopping VX_GUARDED_BY(m_mutex) = false;
    bool m_isTimingNew VX_GUARDED_BY(m_mutex) = false;
};

} // namespace control
