#include "VxCamera/surface/SmallerPackets.h"

#include <mutex>
#include <utility>

#include "VxBase/VxRunningThread.h"

SmallerPackets::SmallerPackets(std::function<void()> stepDown)
    : m_stepDown(std::move(stepDown)), m_thread([this] { Run(); })
{
}

SmallerPackets::~SmallerPackets()
{
    End();
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
    const VxRunningThread counted;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isAsked || m_isEnding; });
        if (m_isEnding)
            return;
        m_isAsked = false;
        lock.unlock();
        m_stepDown();
        lock.lock();
    }
}
