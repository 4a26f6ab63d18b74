#include "VxCamera/control/HeartbeatThread.h"

#include "VxCamera/control/DeviceSession.h"

#include <mutex>
#include <system_error>

namespace control {

HeartbeatThread::~HeartbeatThread()
{
    Stop();
}

VxResult HeartbeatThread::Start()
{
    try {
        m_thread = std::thread([this] { Run(); });
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
    m_stopChanged.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void HeartbeatThread::Run()
{
    while (const auto next = m_session.Beat()) {
        std::unique_lock lock(m_mutex);
        if (m_stopChanged.wait_until(lock, *next, [this] { return m_isStopping; }))
            return;
    }
}

} // namespace control
