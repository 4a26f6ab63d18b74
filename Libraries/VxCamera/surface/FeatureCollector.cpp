#include "VxCamera/surface/FeatureCollector.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace surface {

namespace {

// Chosen: bounds time and text for descriptions that select without end. An index with more values, into a
// table for instance, is not walked; what it selects is stored for its present value.
constexpr std::int64_t kMaxSelectorValues = 256;
constexpr std::size_t kMaxSelectors = 4;
constexpr std::size_t kMaxSteps = 20'000;

} // namespace

std::vector<ConfigurationStep> FeatureCollector::Collect()
{
    for (const Group& group : Groups())
        Walk(group);
    return std::move(m_steps);
}

bool FeatureCollector::IsStored(genapi::NodeId node) const
{
    const genapi::NodeInfo& info = m_map.Info(node);
    return info.isStreamable && info.type != genapi::ValueType::Command &&
           info.type != genapi::ValueType::None && info.type != genapi::ValueType::Category &&
           info.type != genapi::ValueType::Port;
}

// Features without selectors come first: they switch on what selectors choose among.
std::vector<FeatureCollector::Group> FeatureCollector::Groups() const
{
    std::vector<Group> groups(1);
    std::map<Nodes, std::size_t> places{{Nodes(), 0}};
    for (const genapi::Feature& feature : m_map.Features()) {
        if (!IsStored(feature.node))
            continue;
        const Nodes selectors = SelectorsOf(feature.node);
        const auto [place, isNew] = places.try_emplace(selectors, groups.size());
        if (isNew)
            groups.push_back({.selectors = selectors, .features = {}});
        groups[place->second].features.push_back(feature.node);
    }
    return groups;
}

// Selectors may be selected themselves: those stand before them.
FeatureCollector::Nodes FeatureCollector::SelectorsOf(genapi::NodeId feature) const
{
    Nodes found{feature};
    for (std::size_t i = 0; i < found.size() && found.size() <= kMaxSelectors; ++i)
        for (const genapi::NodeId selector : m_map.Selectors(found[i]))
            if (std::find(found.begin(), found.end(), selector) == found.end())
                found.push_back(selector);
    found.erase(found.begin());
    std::reverse(found.begin(), found.end());
    return found.size() <= kMaxSelectors ? found : Nodes();
}

void FeatureCollector::Walk(const Group& group)
{
    std::vector<std::pair<genapi::NodeId, std::string>> before;
    for (const genapi::NodeId selector : group.selectors)
        if (const auto value = m_map.ToText(selector); value && genapi::IsWritable(m_map.Access(selector)))
            before.emplace_back(selector, *value);
    WalkSelector(group, 0, 0);
    for (auto& [selector, value] : before) {
        std::ignore =
            m_map.FromText(selector, value); // it was in force a moment ago; the next walk is not harmed
        Add(ConfigurationStep::Kind::Select, 0, selector, std::move(value));
    }
}

void FeatureCollector::WalkSelector(const Group& group, std::size_t index, std::size_t level)
{
    if (index == group.selectors.size()) {
        Read(group.features, level);
        return;
    }
    const genapi::NodeId selector = group.selectors[index];
    const std::vector<std::string> values = ValuesOf(selector);
    if (values.empty()) { // nothing to choose: what is selected is stored as it is
        WalkSelector(group, index + 1, level);
        return;
    }
    for (const std::string& value : values) {
        if (m_steps.size() >= kMaxSteps)
            return;
        if (!m_map.FromText(selector, value).IsOK())
            continue;
        Add(ConfigurationStep::Kind::Select, level, selector, value);
        WalkSelector(group, index + 1, level + 1);
    }
}

void FeatureCollector::Read(const Nodes& features, std::size_t level)
{
    for (const genapi::NodeId feature : features) {
        if (m_map.Access(feature) != genapi::AccessMode::ReadWrite || m_steps.size() >= kMaxSteps)
            continue;
        if (auto value = m_map.ToText(feature))
            Add(ConfigurationStep::Kind::Feature, level, feature, *std::move(value));
    }
}

std::vector<std::string> FeatureCollector::ValuesOf(genapi::NodeId selector)
{
    if (!genapi::IsWritable(m_map.Access(selector)))
        return {};
    switch (m_map.Info(selector).type) {
    case genapi::ValueType::Enumeration:
        return EntriesOf(selector);
    case genapi::ValueType::Integer:
        return NumbersOf(selector);
    case genapi::ValueType::Boolean:
        return {"false", "true"};
    default:
        return {};
    }
}

std::vector<std::string> FeatureCollector::EntriesOf(genapi::NodeId selector)
{
    std::vector<std::string> values;
    for (const genapi::NodeId entry : m_map.Entries(selector))
        if (genapi::IsAvailable(m_map.Access(entry)))
            values.emplace_back(m_map.EntryName(entry));
    return values;
}

std::vector<std::string> FeatureCollector::NumbersOf(genapi::NodeId selector)
{
    std::vector<std::string> values;
    const auto limits = m_map.GetIntegerLimits(selector);
    if (!limits || limits->minimum > limits->maximum || limits->increment < 1)
        return values;
    // The distance of two 64-bit integers needs 64 bits without sign.
    const std::uint64_t steps =
        (static_cast<std::uint64_t>(limits->maximum) - static_cast<std::uint64_t>(limits->minimum)) /
        static_cast<std::uint64_t>(limits->increment);
    if (steps >= static_cast<std::uint64_t>(kMaxSelectorValues))
        return values;
    for (std::int64_t i = 0; i <= static_cast<std::int64_t>(steps); ++i)
        values.push_back(std::to_string(limits->minimum + i * limits->increment));
    return values;
}

void FeatureCollector::Add(ConfigurationStep::Kind kind, std::size_t level, genapi::NodeId node,
                           std::string value)
{
    m_steps.push_back({kind, level, std::string(m_map.Info(node).name), std::move(value)});
}

} // namespace surface
