#include "VxCamera/surface/FeatureRestorer.h"

#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

namespace surface {

namespace {

// Chosen: a round for the values, and more for those that had to wait for others or changed with them. Rounds
// end when nothing is left to write; a value that never stays must not make them endless.
constexpr int kMaxRounds = 8;

} // namespace

VxResult FeatureRestorer::Restore()
{
    for (int round = 0; round < kMaxRounds; ++round)
        if (!Round())
            break;
    return m_failures.Summary("could not be restored");
}

bool FeatureRestorer::Round()
{
    m_failures.Clear();
    bool hasWritten = false;
    // A selector that refused: what depends on it would reach another feature.
    const ConfigurationStep* lost = nullptr;
    for (const ConfigurationStep& step : m_steps) {
        const bool isSelect = step.kind == ConfigurationStep::Kind::Select;
        if (!isSelect)
            m_failures.Count();
        if (lost != nullptr && step.level <= lost->level)
            lost = nullptr;
        if (lost != nullptr) {
            if (!isSelect)
                m_failures.Note(step.name, VxResult(VxError::NotAvailable,
                                                    "it was not written because \"" + lost->name +
                                                        "\" could not be set to \"" + lost->value + "\""));
            continue;
        }
        const Outcome outcome = Apply(step);
        if (outcome == Outcome::Gone)
            return false;
        if (isSelect && outcome == Outcome::Refused)
            lost = &step;
        hasWritten = hasWritten || (!isSelect && outcome == Outcome::Written);
    }
    return hasWritten;
}

auto FeatureRestorer::Apply(const ConfigurationStep& step) -> Outcome
{
    VxGenParameter* const parameter = m_array.Get(VxString(step.name));
    if (parameter == nullptr) {
        m_failures.Note(step.name, VxResult(VxError::NotFound, "there is no feature of this name"));
        return Outcome::Refused;
    }
    VxString present;
    if (parameter->ToString(present).IsOK() && present.Narrow() == step.value)
        return Outcome::Unchanged;
    const VxResult result = parameter->FromString(VxString(step.value));
    if (result.IsOK())
        return Outcome::Written;
    m_failures.Note(step.name, result);
    return IsGone(result) ? Outcome::Gone : Outcome::Refused;
}

} // namespace surface
