#include "VxCamera/surface/FeatureFailures.h"

#include <algorithm>

namespace surface {

namespace {

// Chosen: more than anybody reads.
constexpr std::size_t kMaxShown = 20;

} // namespace

bool IsGone(const VxResult& failure)
{
    return failure.Code() == VxError::LinkLost || failure.Code() == VxError::NotConnected;
}

void FeatureFailures::Note(std::string_view feature, const VxResult& result)
{
    const std::string& text = result.GetDescription().Narrow();
    const std::string name = std::string(feature) + ":";
    m_failures.push_back(text.starts_with(name) ? result : VxResult(result.Code(), name + " " + text));
}

void FeatureFailures::Clear()
{
    m_failures.clear();
    m_tried = 0;
}

VxResult FeatureFailures::Summary(std::string_view what) const
{
    if (m_failures.empty())
        return VxResult::Ok();
    std::string text = std::to_string(m_failures.size()) + " of " +
                       std::to_string(std::max(m_tried, m_failures.size())) + " features " +
                       std::string(what);
    const std::size_t shown = std::min(m_failures.size(), kMaxShown);
    for (std::size_t i = 0; i < shown; ++i)
        text += (i == 0 ? ": " : "; ") + m_failures[i].GetDescription().Narrow();
    if (shown < m_failures.size())
        text += "; and " + std::to_string(m_failures.size() - shown) + " more";
    return VxResult(m_failures.front().Code(), text);
}

} // namespace surface
