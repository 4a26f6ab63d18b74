#include "VxCamera/receive/SilenceWatch.h"

#include <algorithm>
#include <chrono>

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: the time after which a user asks what is wrong.
constexpr auto kSilence = 1s;

// Chosen: firewalls keep a way open for half a minute and more, and the first packet may get lost.
constexpr auto kOpeningPause = 3s;

} // namespace

void SilenceWatch::Start(Time now)
{
    OnPacket(now);
    m_openedAt.reset();
    m_hasNewEnd = false;
}

void SilenceWatch::OnPacket(Time now)
{
    m_lastPacket = now;
    TellAgain(now);
}

void SilenceWatch::TellAgain(Time now)
{
    m_silentSince = now;
    m_isTold = false;
    m_haveOthersCome = false;
    m_areOthersTold = false;
}

SilenceWatch::Due SilenceWatch::OnTime(Time now)
{
    Due due;
    const bool isNew = !m_isTold || (m_haveOthersCome && !m_areOthersTold);
    due.isSilent = isNew && now - m_silentSince >= kSilence;
    due.haveOthersCome = m_haveOthersCome;
    m_isTold = m_isTold || due.isSilent;
    m_areOthersTold = m_areOthersTold || (due.isSilent && m_haveOthersCome);
    due.opensWay = !m_openedAt || (now - *m_openedAt >= kOpeningPause && now - m_lastPacket >= kOpeningPause);
    due.joinsAgain = due.opensWay && !m_hasNewEnd;
    if (due.opensWay) {
        m_openedAt = now;
        m_hasNewEnd = false;
    }
    return due;
}

void SilenceWatch::OpenWayAgain()
{
    m_hasNewEnd = m_openedAt.has_value();
    m_openedAt.reset();
}

SilenceWatch::Time SilenceWatch::NextDue() const
{
    if (!m_openedAt)
        return m_lastPacket; // at once
    const Time opening = std::max(m_lastPacket, *m_openedAt) + kOpeningPause;
    return m_isTold ? opening : std::min(opening, m_silentSince + kSilence);
}

} // namespace receive
