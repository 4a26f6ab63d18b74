#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/receive/MissingRanges.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <tuple>

namespace receive {

/// When packets are asked for again, and how many.
struct ResendSettings {
    bool isOn = true;

    /// How long a hole may be due to packets that overtook each other. Chosen: networks reorder within some
    /// hundred microseconds.
    std::chrono::microseconds gapTimeout{1000};

    /// After which time without an answer packets are asked for again, at the latest; a camera that answers
    /// faster is asked again sooner. Chosen: longer than the packets queue that a camera has to send before.
    std::chrono::microseconds answerTimeout{20'000};

    /// Packets asked for in one second. Chosen: a quarter of what a 1 Gbit/s link carries in packets of 1,500
    /// bytes.
    std::uint32_t packetsPerSecond = 20'000;

    /// Packets asked for in one block, as a share of its packets. Chosen: a network that loses more is
    /// broken, and requests would make it worse.
    double blockShare = 0.25;
};

/// What has been asked for of one block.
struct BlockAsking {
    std::uint64_t asked = 0; ///< packets, repetitions included
    bool isGivenUp = false;  ///< nothing more is asked for; what was may still come
    bool isRefused = false;  ///< and the camera has said that it has not got what is missing
};

/// Where requests go.
///
/// Owner:  borrowed by whoever asks.
/// Thread: the receiver's; must not wait.
class IResendRequests {
public:
    IResendRequests() = default;
    IResendRequests(const IResendRequests&) = delete;
    IResendRequests& operator=(const IResendRequests&) = delete;
    virtual ~IResendRequests() = default;

    virtual void Ask(std::uint32_t firstPacketId, std::uint32_t lastPacketId) = 0;
};

/// Decides which missing packets are asked for again, and when.
///
/// Two budgets bound the requests: one of each block and one of each second. Both shrink to a part while the
/// camera answers few of them, and grow again with the answers. While it answers nothing at all, it
/// is asked again for one range after the other only, so that a pause does not use the budgets up.
///
/// Owner:  BlockAssembler, by value.
/// Thread: one. Time is an argument.
class ResendPolicy {
public:
    using Time = IVxClock::Time;

    void SetSettings(const ResendSettings& settings) { m_settings = settings; }
    [[nodiscard]] const ResendSettings& Settings() const { return m_settings; }

    /// Asks for what is due.
    /// @param blockPackets  of the whole block, as far as is known
    void Ask(MissingRanges& missing, BlockAsking& asking, std::uint64_t blockPackets, Time now,
             IResendRequests& requests);

    /// @return  when Ask may have something to do; none when nothing is left to be asked for
    [[nodiscard]] std::optional<Time> NextDue(const MissingRanges& missing, const BlockAsking& asking,
                                              Time now) const;

    /// Whether no packet of the block can be hoped for any more.
    [[nodiscard]] bool IsHopeless(const MissingRanges& missing, const BlockAsking& asking, Time now) const;

    /// @param blockPackets  of the whole block
    /// @return  whether so many more packets of the block may be asked for
    [[nodiscard]] bool IsWithinBudget(std::uint64_t packets, const BlockAsking& asking,
                                      std::uint64_t blockPackets) const;

    /// A packet arrived that had been missing.
    /// @return  whether it had been asked for
    bool OnArrival(const MissingRange& was, Time now);

    /// A packet arrived that was sent again, but is here already, was cut, or comes too late.
    void OnUselessAnswer(Time now);

    /// The camera has told that it will not, or cannot yet, send a packet again.
    void OnRefusal(Time now) { std::ignore = EndPause(now); }

    /// A packet arrived too late that is not marked as sent again: not every camera marks them.
    void OnLatePacket() { m_probes = IsMute() ? 0 : m_probes; }

    /// Another acquisition begins: nothing has been asked for. What was learnt about the camera stays.
    void BeginAnew();

    /// After which time without an answer packets are asked for again.
    [[nodiscard]] std::chrono::microseconds AnswerTimeout() const;

    /// To which part the budgets are cut: 1 while the camera answers.
    [[nodiscard]] double BudgetScale() const { return m_scale; }

private:
    enum class Verdict { Asked, NotNow, TooMuch };

    [[nodiscard]] Time DueTime(const MissingRange& range) const;
    [[nodiscard]] std::chrono::nanoseconds ProbePause() const;
    [[nodiscard]] bool IsMute() const;
    [[nodiscard]] bool MayBeAskedFor(const MissingRange& range) const;
    [[nodiscard]] Time LostAt(const MissingRange& range) const;
    [[nodiscard]] std::optional<Time> LastAnswerDue(const MissingRanges& missing,
                                                    const BlockAsking& asking) const;
    void NoteAsking(MissingRange& range, Time now);
    bool NoteAnswer(Time now);
    bool EndPause(Time now);
    Verdict Spend(std::uint64_t packets, BlockAsking& asking, std::uint64_t blockPackets);
    [[nodiscard]] double MostTokens() const;
    void Refill(Time now);
    void JudgeAnswers(Time now);

    ResendSettings m_settings;

    // How long the camera takes to answer; measured on packets that were asked for once.
    std::optional<std::chrono::nanoseconds> m_meanAnswer; // none before the first answer
    std::chrono::nanoseconds m_answerSpread{};

    // What the camera does about requests now.
    std::optional<Time> m_unansweredSince; // the first request after the last answer
    Time m_resumedAt;                      // the last answer behind a pause
    Time m_probedAt;
    unsigned m_probes = 0; // requests that were not the first ones of their packets, since the last answer

    double m_scale = 1;
    double m_tokens = 0; // packets that may be asked for now; negative after a range larger than was saved up
    std::optional<Time> m_refilledAt;
    Time m_judgedAt;
    std::uint64_t m_askedSince = 0; // since m_judgedAt
    std::uint64_t m_answeredSince = 0;
};

} // namespace receive
