#include "VxCamera/surface/SmallerPackets.h"

#include <mutex>
#include <system_error>
#include <tuple>
#include <utility>

#include "VxBase/VxRunningThread.h"
#include "VxCamera/surface/NoThrow.h"

SmallerPackets::SmallerPackets(std::function<void()> stepDown) : m_stepDown(std::move(stepDown)) {}

SmallerPackets::~SmallerPackets()
{
    End();
}

VxResult SmallerPackets::Start()
{
    try {
        m_thread = std::thread([this] {
            const VxRunningThread counted;
            Run();
        });
    } catch (const std::system_error&) {
        return VxResult(VxError::OutOfMemory, "the system starts no further thread for the packet size");
    }
    return VxResult::Ok();
}

void SmallerPackets::End()
{
    {
        const VxLock lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void SmallerPackets::Ask()
{
    {
        const VxLock lock(m_mutex);
        m_isAsked = true;
    }
    m_changed.notify_all();
}

void SmallerPackets::Run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isAsked || m_isEnding; });
        if (m_isEnding)
            return;
        m_isAsked = false;
        lock.unlock();
        std::ignore = NoThrow([this] {
            m_stepDown();
            return VxResult::Ok(); // nobody could catch what this thread throws; the next request tries again
        });
        lock.lock();
    }
}
