#include "VxCamera/receive/SilenceWatch.h"

#include <algorithm>
#include <chrono>

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: the time after which a user asks what is wrong.
constexpr auto kSilence = 1s;

// Chosen: firewalls keep a way open for half a minute and more, and the first packet may get lost; an
// interface that comes up is noticed soon enough.
constexpr auto kSilencePause = 3s;

} // namespace

void SilenceWatch::Start(Time now)
{
    OnPacket(now);
    m_openedAt.reset();
    m_joinedAt.reset();
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
    due.opensWay = now >= NextAfter(m_openedAt);
    if (due.opensWay)
        m_openedAt = now;
    due.joins = now >= NextAfter(m_joinedAt);
    if (due.joins)
        m_joinedAt = now;
    return due;
}

/// When something is due that is done at once and then again and again while no packet comes.
/// @param last  when it was done; none: not yet
SilenceWatch::Time SilenceWatch::NextAfter(const std::optional<Time>& last) const
{
    return last ? std::max(m_lastPacket, *last) + kSilencePause : m_lastPacket;
}

SilenceWatch::Time SilenceWatch::NextDue() const
{
    const Time next = std::min(NextAfter(m_openedAt), NextAfter(m_joinedAt));
    return m_isTold ? next : std::min(next, m_silentSince + kSilence);
}

} // namespace receive
