#include "VxCamera/surface/FeatureRestorer.h"

#include <algorithm>

#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

namespace surface {

namespace {

// Chosen: one round for the values, one for those that had to wait for others, one for those that changed
// with them, and one for chance.
constexpr int kMaxRounds = 4;

constexpr std::size_t kMaxFailuresShown = 20;

} // namespace

VxResult FeatureRestorer::Restore()
{
    for (int round = 0; round < kMaxRounds; ++round)
        if (!Round())
            break;
    const auto isFeature = [](const ConfigurationStep& step) {
        return step.kind == ConfigurationStep::Kind::Feature;
    };
    return Summary(static_cast<std::size_t>(std::count_if(m_steps.begin(), m_steps.end(), isFeature)));
}

bool FeatureRestorer::Round()
{
    m_failures.clear();
    bool hasWritten = false;
    const ConfigurationStep* lost =
        nullptr; // a selector that refused: what depends on it would reach another feature
    for (const ConfigurationStep& step : m_steps) {
        const bool isSelect = step.kind == ConfigurationStep::Kind::Select;
        if (lost != nullptr && step.level <= lost->level)
            lost = nullptr;
        if (lost != nullptr) {
            if (!isSelect)
                Note(step,
                     VxResult(VxError::NotAvailable, "it was not written because \"" + lost->name +
                                                         "\" could not be set to \"" + lost->value + "\""));
            continue;
        }
        const Outcome outcome = Apply(step);
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
        Note(step, VxResult(VxError::NotFound, "there is no feature of this name"));
        return Outcome::Refused;
    }
    VxString present;
    if (parameter->ToString(present).IsOK() && present.Narrow() == step.value)
        return Outcome::Unchanged;
    const VxResult result = parameter->FromString(VxString(step.value));
    if (result.IsOK())
        return Outcome::Written;
    Note(step, result);
    return Outcome::Refused;
}

void FeatureRestorer::Note(const ConfigurationStep& step, const VxResult& result)
{
    const std::string& text = result.GetDescription().Narrow();
    const bool isNamed = text.starts_with(step.name + ":");
    m_failures.push_back(isNamed ? result : VxResult(result.Code(), step.name + ": " + text));
}

VxResult FeatureRestorer::Summary(std::size_t features) const
{
    if (m_failures.empty())
        return VxResult::Ok();
    std::string text = std::to_string(m_failures.size()) + " of " + std::to_string(features) +
                       " features could not be restored";
    const std::size_t shown = std::min(m_failures.size(), kMaxFailuresShown);
    for (std::size_t i = 0; i < shown; ++i)
        text += (i == 0 ? ": " : "; ") + m_failures[i].GetDescription().Narrow();
    if (shown < m_failures.size())
        text += "; and " + std::to_string(m_failures.size() - shown) + " more";
    return VxResult(m_failures.front().Code(), text);
}

} // namespace surface
