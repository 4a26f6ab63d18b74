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

void FeatureFailures::NoteUnreached(std::string_view feature)
{
    if (m_known.emplace(feature).second)
        m_unreached.emplace_back(feature);
}

VxResult FeatureFailures::TimeIsOver(std::chrono::seconds limit)
{
    return {VxError::Timeout,
            "the time for all features together, " + std::to_string(limit.count()) +
                " s, was over: the camera answers too slowly; check the network and try again"};
}

VxResult FeatureFailures::Summary(std::string_view what) const
{
    if (m_failures.empty())
        return VxResult::Ok();
    std::string text = std::to_string(m_failures.size()) + " of " +
                       std::to_string(std::max(m_tried, m_failures.size())) + " features " +
                       std::string(what);
    const auto list = [&text](const auto& all, const char* before, const char* between, const auto& shown) {
        for (std::size_t i = 0; i < std::min(all.size(), kMaxShown); ++i)
            text += (i == 0 ? before : between) + shown(all[i]);
        if (all.size() > kMaxShown)
            text += between + ("and " + std::to_string(all.size() - kMaxShown)) + " more";
    };
    list(m_failures, ": ", "; ", [](const VxResult& each) { return each.GetDescription().Narrow(); });
    list(m_unreached, "; not reached: ", ", ", [](const std::string& name) { return name; });
    return VxResult(m_failures.front().Code(), text);
}

} // namespace surface
