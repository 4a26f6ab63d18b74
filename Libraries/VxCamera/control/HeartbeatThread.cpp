#include "VxCamera/control/HeartbeatThread.h"

#include "VxBase/VxRunningThread.h"
#include "VxCamera/control/DeviceSession.h"

#include <chrono>
#include <mutex>
#include <system_error>

namespace control {

namespace {

using namespace std::chrono_literals;

// Chosen: several tries fit into the heartbeat time-out of every camera.
constexpr auto kRetryDelay = 50ms;

} // namespace

HeartbeatThread::HeartbeatThread(DeviceSession& session) : m_session(session)
{
    m_session.SetTimingListener([this] { LookAgain(); });
}

HeartbeatThread::~HeartbeatThread()
{
    Stop();
}

VxResult HeartbeatThread::Start()
{
    try {
        m_thread = std::thread([this] {
            const VxRunningThread counted;
            Run();
        });
    } catch (const std::system_error&) {
        return {VxError::OutOfMemory, "the system starts no further thread for the camera's heartbeat"};
    }
    return VxResult::Ok();
}

void HeartbeatThread::Stop()
{
    {
        const VxLock lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void HeartbeatThread::LookAgain()
{
    {
        const VxLock lock(m_mutex);
        m_isTimingNew = true;
    }
    m_changed.notify_all();
}

/// Nobody could catch what this thread throws: a heartbeat for which there was no memory is sent later.
std::optional<IVxClock::Time> HeartbeatThread::BeatOrRetry()
{
    try {
        return m_session.Beat();
    } catch (...) {
        return m_session.Client().Now() + kRetryDelay;
    }
}

void HeartbeatThread::Run()
{
    while (const auto next = BeatOrRetry()) {
        std::unique_lock lock(m_mutex);
        m_changed.wait_until(lock, *next, [this] { return m_isStopping || m_isTimingNew; });
        if (m_isStopping)
            return;
        m_isTimingNew = false;
    }
}

} // namespace control
