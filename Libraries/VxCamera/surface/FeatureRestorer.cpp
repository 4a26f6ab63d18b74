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

// Chosen: as many selectors as a feature that is stored can depend on; a text that nests more must not make
// the end of a restore a long one.
constexpr std::size_t kMaxPutBack = 16;

bool IsSelectOf(const ConfigurationStep& step, const std::string& selector)
{
    return step.kind == ConfigurationStep::Kind::Select && step.name == selector;
}

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
    m_open.clear();
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
        CloseBefore(step);
        const Outcome outcome = Apply(i);
        if (outcome == Outcome::OutOfTime)
            PutSelectorsBack(i);
        if (outcome == Outcome::OutOfTime || outcome == Outcome::Gone)
            return false;
        if (isSelect && outcome != Outcome::Refused)
            m_open.push_back(i);
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
        return Outcome::OutOfTime;
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
    return IsGone(*m_results[index]) ? Outcome::Gone : Outcome::Refused;
}

void FeatureRestorer::CloseBefore(const ConfigurationStep& next)
{
    while (!m_open.empty()) {
        const ConfigurationStep& last = m_steps[m_open.back()];
        if (last.level < next.level || (last.level == next.level && IsSelectOf(next, last.name)))
            return;
        m_open.pop_back();
    }
}

/// The last step of a selector in its group brings back the value that it had when the features were
/// collected.
void FeatureRestorer::PutSelectorsBack(std::size_t reached)
{
    for (std::size_t tried = 0; !m_open.empty() && tried < kMaxPutBack; ++tried) {
        const ConfigurationStep& selector = m_steps[m_open.back()];
        std::size_t last = m_open.back();
        for (std::size_t i = reached; i < m_steps.size() && m_steps[i].level >= selector.level; ++i) {
            if (m_steps[i].level > selector.level)
                continue;
            if (!IsSelectOf(m_steps[i], selector.name))
                break;
            last = i;
        }
        while (!m_open.empty() && m_steps[m_open.back()].level == selector.level)
            m_open.pop_back(); // earlier values of the same one
        VxGenParameter* const parameter = m_array.Get(VxString(selector.name));
        if (parameter == nullptr)
            continue;
        const VxResult put = parameter->FromString(VxString(m_steps[last].value));
        if (last != reached && !put.IsOK()) // else that the time was over says more
            m_results[last] = put;
        if (IsGone(put))
            return;
    }
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
