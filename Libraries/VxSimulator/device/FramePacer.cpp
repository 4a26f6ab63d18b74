#include "VxSimulator/device/FramePacer.h"

namespace simulator {

void FramePacer::Start(Time now, std::optional<std::uint64_t> frames)
{
    m_isActive = !frames || *frames > 0;
    m_framesLeft = frames;
    m_isTriggered = false;
    m_nextDue = now;
}

void FramePacer::Stop()
{
    m_isActive = false;
    m_isTriggered = false;
}

void FramePacer::Trigger()
{
    m_isTriggered = m_isActive && m_mode == Mode::Triggered;
}

std::optional<FramePacer::Time> FramePacer::NextDue() const
{
    if (!m_isActive || (m_mode == Mode::Triggered && !m_isTriggered))
        return std::nullopt;
    return m_nextDue;
}

bool FramePacer::Take(Time now)
{
    const auto due = NextDue();
    if (!due || now < *due)
        return false;
    const bool isLate = now - *due >= m_period;
    m_nextDue = (isLate || m_mode == Mode::Triggered ? now : *due) + m_period;
    m_isTriggered = false;
    if (m_framesLeft && --*m_framesLeft == 0)
        m_isActive = false;
    return true;
}

} // namespace simulator
