#include "VxCamera/surface/FeatureRestorer.h"

#include "VxCamera/surface/FeatureFailures.h"
#include "VxCamera/surface/FeatureStore.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

namespace surface {

namespace {

// Chosen: a round for the values, and more for those that had to wait for others or changed with them. Rounds
// end when nothing is left to write; a value that never stays must not make them endless.
constexpr int kMaxRounds = 8;

} // namespace

FeatureRestorer::FeatureRestorer(VxGenParameterArray& array, const std::vector<ConfigurationStep>& steps,
                                 const IVxClock& clock)
    : m_array(array),
      m_steps(steps),
      m_clock(clock),
      m_end(clock.Now() + kLongestTransfer),
      m_results(steps.size())
{
}

VxResult FeatureRestorer::Restore()
{
    for (int round = 0; round < kMaxRounds; ++round)
        if (!Round())
            break;
    return Summary();
}

bool FeatureRestorer::Round()
{
    bool hasWritten = false;
    // A selector that refused: what depends on it would reach another feature.
    const ConfigurationStep* lost = nullptr;
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
        const ConfigurationStep& step = m_steps[i];
        const bool isSelect = step.kind == ConfigurationStep::Kind::Select;
        if (lost != nullptr && step.level <= lost->level)
            lost = nullptr;
        if (lost != nullptr) {
            m_results[i] = isSelect ? VxResult::Ok()
                                    : VxResult(VxError::NotAvailable,
                                               "it was not written because \"" + lost->name +
                                                   "\" could not be set to \"" + lost->value + "\"");
            continue;
        }
        const Outcome outcome = Apply(i);
        if (outcome == Outcome::Ended)
            return false;
        if (isSelect && outcome == Outcome::Refused)
            lost = &step;
        hasWritten = hasWritten || (!isSelect && outcome == Outcome::Written);
    }
    return hasWritten;
}

auto FeatureRestorer::Apply(std::size_t index) -> Outcome
{
    const ConfigurationStep& step = m_steps[index];
    if (m_clock.Now() >= m_end) {
        if (!m_results[index]) // else why it was refused in an earlier round says more
            m_results[index] = FeatureFailures::TimeIsOver(kLongestTransfer);
        return Outcome::Ended;
    }
    VxGenParameter* const parameter = m_array.Get(VxString(step.name));
    if (parameter == nullptr) {
        m_results[index] = VxResult(VxError::NotFound, "there is no feature of this name");
        return Outcome::Refused;
    }
    VxString present;
    if (parameter->ToString(present).IsOK() && present.Narrow() == step.value) {
        m_results[index] = VxResult::Ok();
        return Outcome::Unchanged;
    }
    m_results[index] = parameter->FromString(VxString(step.value));
    if (m_results[index]->IsOK())
        return Outcome::Written;
    return IsGone(*m_results[index]) ? Outcome::Ended : Outcome::Refused;
}

VxResult FeatureRestorer::Summary() const
{
    FeatureFailures failures;
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
        const bool isSelect = m_steps[i].kind == ConfigurationStep::Kind::Select;
        if (!isSelect)
            failures.Count();
        if (m_results[i] && !m_results[i]->IsOK())
            failures.Note(m_steps[i].name, *m_results[i]);
        else if (!m_results[i] && !isSelect)
            failures.NoteUnreached(m_steps[i].name);
    }
    return failures.Summary("could not be restored");
}

} // namespace surface
