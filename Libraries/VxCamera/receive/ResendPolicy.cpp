#include "VxCamera/receive/ResendPolicy.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

namespace receive {

namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;
using std::chrono::nanoseconds;

// Chosen: with one packet in ten lost, both ways, one in 10^16 is then still missing.
constexpr unsigned kMostAsks = 16;

// Chosen: before the camera has answered for the first time.
constexpr microseconds kFirstAnswerTimeout = 5ms;

// Chosen: a request needs its way through two queues of the system even where the network takes no time.
constexpr microseconds kLeastAnswerTimeout = 2ms;

// Chosen: small blocks may lose all of their packets at once.
constexpr double kLeastBlockBudget = 32;

// Chosen: a budget of the second is not saved up for longer than this share of it.
constexpr double kSavedSeconds = 0.25;

// Chosen: one question in 64 remains, to notice when a camera answers again.
constexpr double kLeastScale = 1.0 / 64;

// Chosen: over which time, and how many packets at least, answers are counted.
constexpr auto kJudgingTime = 250ms;
constexpr std::uint64_t kJudgedPackets = 16;

// Chosen: when the budgets allow too little to be judged by, they grow again after this time: the camera may
// answer now.
constexpr auto kForgivingTime = 2s;

// Chosen: below the first share the budgets are halved, above the second one doubled.
constexpr double kFewAnswers = 0.5;
constexpr double kManyAnswers = 0.75;

// Weights of a new measurement in the running mean and spread of the answer time, and how many spreads are
// waited for: those that TCP uses for the same purpose.
constexpr int kMeanWeight = 8;
constexpr int kSpreadWeight = 4;
constexpr int kSpreads = 4;

// Chosen: an answer may be late by this, however regular the ones before were.
constexpr nanoseconds kLeastSpread = 1ms;

// Chosen: more doublings lead beyond any limit of the time.
constexpr unsigned kMostDoublings = 6;

// Chosen: a camera that has never answered, nor so many requests in a row that were repeated, is asked once
// for each packet. Where one packet in ten is lost, both ways, one camera in 110,000 is misjudged, until an
// answer comes, and so is one that pauses for 80 ms when it is asked first.
constexpr unsigned kMuteProbes = 6;

// Chosen: how soon a request that the second's budget did not allow is tried again.
constexpr auto kBudgetPause = 1ms;

} // namespace

microseconds ResendPolicy::AnswerTimeout() const
{
    const nanoseconds learnt =
        m_meanAnswer ? *m_meanAnswer + std::max<nanoseconds>(kSpreads * m_answerSpread, kLeastSpread)
                     : nanoseconds(kFirstAnswerTimeout);
    const nanoseconds least = std::min(kLeastAnswerTimeout, m_settings.answerTimeout);
    return std::chrono::ceil<microseconds>(
        std::clamp<nanoseconds>(learnt, least, nanoseconds(m_settings.answerTimeout)));
}

ResendPolicy::Time ResendPolicy::DueTime(const MissingRange& range) const
{
    if (range.asks == 0)
        return range.since + m_settings.gapTimeout;
    // Behind a pause answers come in a row, to requests that are older than usual.
    const Time due = std::max(range.askedAt, m_resumedAt) + AnswerTimeout();
    return m_probes > 0 ? std::max(due, m_probedAt + ProbePause()) : due;
}

/// How long a camera that answers nothing is left alone: after the first probe, which may have been lost, for
/// the usual time, and then each time twice as long.
nanoseconds ResendPolicy::ProbePause() const
{
    return std::min<nanoseconds>(AnswerTimeout() * (1 << std::min(m_probes - 1, kMostDoublings)),
                                 m_settings.answerTimeout);
}

void ResendPolicy::NoteAsking(MissingRange& range, Time now)
{
    if (!m_unansweredSince)
        m_unansweredSince = now;
    if (range.asks == 0) {
        range.firstAskedAt = now;
    } else {
        ++m_probes;
        m_probedAt = now;
    }
    range.askedAt = now;
    ++range.asks;
}

/// @return  whether the camera had paused
bool ResendPolicy::NoteAnswer(Time now)
{
    ++m_answeredSince;
    return EndPause(now);
}

/// @return  as NoteAnswer
bool ResendPolicy::EndPause(Time now)
{
    // The first probe asks for what a single loss has kept back, too: then it is answered as fast as usual.
    const bool isLoss = m_probes == 1 && now - m_probedAt <= AnswerTimeout();
    const bool isResumed = !isLoss && m_unansweredSince && now - *m_unansweredSince > AnswerTimeout();
    if (isResumed)
        m_resumedAt = now;
    m_unansweredSince.reset();
    m_probes = 0;
    return isResumed;
}

void ResendPolicy::BeginAnew()
{
    m_unansweredSince.reset();
    m_probes = IsMute() ? kMuteProbes : 0;
}

/// Whether the camera does not answer at all.
bool ResendPolicy::IsMute() const
{
    return !m_meanAnswer && m_probes >= kMuteProbes;
}

bool ResendPolicy::MayBeAskedFor(const MissingRange& range) const
{
    return range.asks == 0 || (range.asks < kMostAsks && !IsMute());
}

/// Until when a range that is not asked for any more may still come.
ResendPolicy::Time ResendPolicy::LostAt(const MissingRange& range) const
{
    const auto patience = m_meanAnswer ? m_settings.answerTimeout : AnswerTimeout();
    return std::max(range.askedAt, m_resumedAt) + patience;
}

/// How much of the second's budget can be saved up.
double ResendPolicy::MostTokens() const
{
    return std::max(m_settings.packetsPerSecond * m_scale * kSavedSeconds, kLeastBlockBudget);
}

void ResendPolicy::Refill(Time now)
{
    const double perSecond = m_settings.packetsPerSecond * m_scale;
    const double most = MostTokens();
    if (!m_refilledAt)
        m_tokens = most;
    else
        m_tokens += perSecond * std::chrono::duration<double>(now - *m_refilledAt).count();
    m_tokens = std::min(m_tokens, most);
    m_refilledAt = now;
}

void ResendPolicy::JudgeAnswers(Time now)
{
    const bool isJudged = now - m_judgedAt >= kJudgingTime && m_askedSince >= kJudgedPackets;
    const bool isForgiven = now - m_judgedAt >= kForgivingTime;
    if (!isJudged && !isForgiven)
        return;
    const double share =
        isJudged ? static_cast<double>(m_answeredSince) / static_cast<double>(m_askedSince) : 1.0;
    if (share < kFewAnswers)
        m_scale = std::max(m_scale / 2, kLeastScale);
    else if (share > kManyAnswers)
        m_scale = std::min(m_scale * 2, 1.0);
    m_judgedAt = now;
    m_askedSince = 0;
    m_answeredSince = 0;
}

bool ResendPolicy::IsWithinBudget(std::uint64_t packets, const BlockAsking& asking,
                                  std::uint64_t blockPackets) const
{
    const double ofBlock =
        std::max(m_settings.blockShare * static_cast<double>(blockPackets), kLeastBlockBudget) * m_scale;
    return static_cast<double>(asking.asked + packets) <= std::max(ofBlock, 1.0);
}

ResendPolicy::Verdict ResendPolicy::Spend(std::uint64_t packets, BlockAsking& asking,
                                          std::uint64_t blockPackets)
{
    const auto wanted = static_cast<double>(packets);
    if (!IsWithinBudget(packets, asking, blockPackets))
        return Verdict::TooMuch;
    // A range that is larger than what can be saved up is paid for afterwards; else it would never be asked
    // for.
    if (m_tokens < std::min(wanted, MostTokens()))
        return Verdict::NotNow;
    m_tokens -= wanted;
    asking.asked += packets;
    m_askedSince += packets;
    return Verdict::Asked;
}

void ResendPolicy::Ask(MissingRanges& missing, BlockAsking& asking, std::uint64_t blockPackets, Time now,
                       IResendRequests& requests)
{
    if (asking.isGivenUp || !m_settings.isOn)
        return;
    if (missing.IsOverfull()) {
        asking.isGivenUp = true;
        return;
    }
    JudgeAnswers(now);
    Refill(now);
    for (MissingRange& range : missing.All()) {
        if (!MayBeAskedFor(range) || now < DueTime(range))
            continue;
        const Verdict verdict = Spend(range.Packets(), asking, blockPackets);
        if (verdict == Verdict::TooMuch)
            asking.isGivenUp = true;
        if (verdict != Verdict::Asked)
            return;
        NoteAsking(range, now);
        requests.Ask(range.first, range.last);
    }
}

std::optional<ResendPolicy::Time> ResendPolicy::NextDue(const MissingRanges& missing,
                                                        const BlockAsking& asking, Time now) const
{
    if (!m_settings.isOn)
        return std::nullopt;
    if (asking.isGivenUp) {
        const auto last = LastAnswerDue(missing, asking);
        return last && *last > now ? last : std::nullopt;
    }
    std::optional<Time> next;
    for (const MissingRange& range : missing.All()) {
        const bool isAskedFor = MayBeAskedFor(range);
        if (!isAskedFor && now >= LostAt(range))
            continue;
        // What is due and was not asked for has met the second's budget.
        const Time due = isAskedFor ? std::max(DueTime(range), now + kBudgetPause) : LostAt(range);
        next = std::min(next.value_or(due), due);
    }
    return next;
}

bool ResendPolicy::IsHopeless(const MissingRanges& missing, const BlockAsking& asking, Time now) const
{
    if (!m_settings.isOn)
        return true;
    if (asking.isGivenUp) {
        const auto last = LastAnswerDue(missing, asking);
        return !last || now >= *last;
    }
    return !missing.IsEmpty() && std::ranges::all_of(missing.All(), [&](const MissingRange& range) {
        // Who does not answer is not waited for because the second's budget is used up.
        return MayBeAskedFor(range) ? IsMute() && now >= DueTime(range) : now >= LostAt(range);
    });
}

/// @return  until when a block of which nothing more is asked for may still become whole; none: it cannot
std::optional<ResendPolicy::Time> ResendPolicy::LastAnswerDue(const MissingRanges& missing,
                                                              const BlockAsking& asking) const
{
    if (asking.isRefused || missing.IsOverfull() || missing.IsEmpty())
        return std::nullopt;
    Time last;
    for (const MissingRange& range : missing.All()) {
        if (range.asks == 0)
            return std::nullopt;
        last = std::max(last, LostAt(range));
    }
    return last;
}

void ResendPolicy::OnUselessAnswer(Time now)
{
    std::ignore = NoteAnswer(now);
}

bool ResendPolicy::OnArrival(const MissingRange& was, Time now)
{
    if (was.asks == 0)
        return false;
    // One pause counts once, however many answers it kept back.
    if (!NoteAnswer(now) && m_meanAnswer && was.askedAt < m_resumedAt)
        return true;
    // Which of several questions it answers is not known, unless it comes too soon after the last one.
    const bool isTooSoon = !m_meanAnswer || now - was.askedAt < *m_meanAnswer / 2;
    if (was.asks > 1 && !isTooSoon)
        return true;
    const nanoseconds took = now - was.firstAskedAt;
    if (!m_meanAnswer) {
        m_meanAnswer = took;
        m_answerSpread = took / 2;
        return true;
    }
    const nanoseconds error = took - *m_meanAnswer;
    m_meanAnswer = *m_meanAnswer + error / kMeanWeight;
    m_answerSpread += (std::chrono::abs(error) - m_answerSpread) / kSpreadWeight;
    return true;
}

} // namespace receive
