#include "VxCamera/surface/FeatureCollector.h"

#include <algorithm>
#include <map>
#include <utility>

namespace surface {

namespace {

// Chosen: bounds time and text for descriptions that select without end. A selector with more values, an
// index into a table for instance, is not walked, nor are more selectors at once: what they select is stored
// for their present values.
constexpr std::size_t kMaxSelectorValues = 256;
constexpr std::size_t kMaxWalkedSelectors = 4;
constexpr std::size_t kMaxAttempts = 20'000;
static_assert(kMaxAttempts < kMaxSteps, "what is collected could not be restored");

// Chosen: of one feature; cameras have two or three.
constexpr std::size_t kMaxSelectors = 16;

} // namespace

CollectedFeatures FeatureCollector::Collect()
{
    for (const Group& group : Groups()) {
        m_reached = 0;
        WalkSelector(group, 0, 0);
        if (m_isEnded) // what is selected is complete only when it was read for all values
            NoteUnreached(group, group.selectors.empty() ? m_reached : 0);
    }
    VxResult result = m_failures.Summary("could not be read");
    const VxResult gone = m_map.CloseReason();
    return {std::move(m_steps), gone.IsOK() || !result.IsOK() ? std::move(result) : gone, !gone.IsOK()};
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

// Selectors may be selected themselves: those that select them stand before them.
FeatureCollector::Nodes FeatureCollector::SelectorsOf(genapi::NodeId feature) const
{
    Nodes path{feature};
    Nodes found;
    FindSelectors(feature, path, found);
    return found;
}

void FeatureCollector::FindSelectors(genapi::NodeId feature, Nodes& path, Nodes& found) const
{
    const auto holds = [](const Nodes& nodes, genapi::NodeId node) {
        return std::find(nodes.begin(), nodes.end(), node) != nodes.end();
    };
    for (const genapi::NodeId selector : m_map.Selectors(feature)) {
        if (found.size() >= kMaxSelectors) // or a net of selectors would be walked along each of its ways
            return;
        // A node on the path selects itself by a detour.
        if (path.size() > kMaxSelectors || holds(path, selector) || holds(found, selector))
            continue;
        path.push_back(selector);
        FindSelectors(selector, path, found);
        path.pop_back();
        if (found.size() < kMaxSelectors)
            found.push_back(selector);
    }
}

void FeatureCollector::WalkSelector(const Group& group, std::size_t index, std::size_t level)
{
    if (index == group.selectors.size()) {
        Read(group.features, level);
        return;
    }
    const genapi::NodeId selector = group.selectors[index];
    if (!MayTry(selector))
        return;
    const auto before = m_map.ToText(selector);
    if (!before || !genapi::IsWritable(m_map.Access(selector))) { // nothing to choose
        WalkSelector(group, index + 1, level);
        return;
    }
    const bool isWalked = group.selectors.size() <= kMaxWalkedSelectors;
    std::vector<std::string> values = isWalked ? ValuesOf(selector) : std::vector<std::string>();
    if (values.empty())
        values.push_back(*before);
    for (const std::string& value : values) {
        if (!MayTry(selector))
            break;
        if (const VxResult chosen = m_map.FromText(selector, value); !chosen.IsOK()) {
            if (IsGone(chosen))
                Note(selector, chosen);
            continue; // an entry that the camera does not take now selects nothing
        }
        Add(ConfigurationStep::Kind::Select, level, selector, value);
        WalkSelector(group, index + 1, level + 1);
    }
    // Here and not at the end: a selected selector can have a value of its own for each value of the outer
    // one.
    PutBack(selector, level, *before);
}

bool FeatureCollector::MayTry(genapi::NodeId next)
{
    if (m_isEnded)
        return false;
    if (const VxResult gone = m_map.CloseReason(); !gone.IsOK()) {
        End(next, gone);
        return false;
    }
    if (m_clock.Now() >= m_end) {
        End(next, FeatureFailures::TimeIsOver(kLongestTransfer));
        return false;
    }
    if (m_attempts < kMaxAttempts) {
        ++m_attempts;
        return true;
    }
    End(next, VxResult(VxError::NotSupported, "from here on nothing was stored: there are more than " +
                                                  std::to_string(kMaxAttempts) + " values"));
    return false;
}

void FeatureCollector::Note(genapi::NodeId node, const VxResult& failure)
{
    if (IsGone(failure))
        End(node, failure);
    else
        m_failures.Note(m_map.Info(node).name, failure);
}

void FeatureCollector::End(genapi::NodeId node, const VxResult& why)
{
    m_failures.Note(m_map.Info(node).name, why);
    m_isEnded = true;
    m_endedAt = node;
}

void FeatureCollector::NoteUnreached(const Group& group, std::size_t first)
{
    for (std::size_t i = first; i < group.features.size(); ++i)
        if (group.features[i] != m_endedAt)
            m_failures.NoteUnreached(m_map.Info(group.features[i]).name);
}

void FeatureCollector::PutBack(genapi::NodeId selector, std::size_t level, const std::string& value)
{
    if (const VxResult result = m_map.FromText(selector, value); !result.IsOK())
        Note(selector, result);
    Add(ConfigurationStep::Kind::Select, level, selector, value);
}

void FeatureCollector::Read(const Nodes& features, std::size_t level)
{
    for (const genapi::NodeId feature : features) {
        if (!MayTry(feature))
            return;
        ++m_reached;
        if (m_map.Access(feature) != genapi::AccessMode::ReadWrite)
            continue;
        m_failures.Count();
        if (auto value = m_map.ToText(feature))
            Add(ConfigurationStep::Kind::Feature, level, feature, *std::move(value));
        else
            Note(feature, value.Error());
    }
}

std::vector<std::string> FeatureCollector::ValuesOf(genapi::NodeId selector)
{
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
    if (m_map.Entries(selector).size() > kMaxSelectorValues)
        return values;
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
    if (steps >= kMaxSelectorValues)
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
