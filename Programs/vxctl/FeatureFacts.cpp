#include "vxctl/FeatureFacts.h"

#include "VxCamera/surface/NodeParameterArray.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenFloat.h"
#include "VxDSSource/camera/VxGenInteger.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>

namespace vxctl {
namespace {

std::string FloatText(double value)
{
    constexpr std::size_t kLongest = 32; // fixed: the shortest form that reads back has at most 24 characters
    std::array<char, kLongest> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr};
}

void AddIntegerLimits(const VxGenInteger& feature, FeatureFacts& facts)
{
    std::int64_t value = 0;
    if (feature.GetMin(value).IsOK() && value != std::numeric_limits<std::int64_t>::min())
        facts.minimum = std::to_string(value);
    if (feature.GetMax(value).IsOK() && value != std::numeric_limits<std::int64_t>::max())
        facts.maximum = std::to_string(value);
    if (feature.GetIncrement(value).IsOK() && value != 1)
        facts.increment = std::to_string(value);
}

void AddFloatLimits(const VxGenFloat& feature, FeatureFacts& facts)
{
    constexpr double kLargest = std::numeric_limits<double>::max();
    double value = 0;
    if (feature.GetMin(value).IsOK() && std::isfinite(value) && value != -kLargest)
        facts.minimum = FloatText(value);
    if (feature.GetMax(value).IsOK() && std::isfinite(value) && value != kLargest)
        facts.maximum = FloatText(value);
}

void AddEntries(const VxGenEnum& feature, FeatureFacts& facts)
{
    std::int64_t count = 0;
    if (!feature.GetEntriesCount(count).IsOK())
        return;
    for (std::int64_t i = 0; i < count; ++i) {
        const VxGenEnumEntry* entry = nullptr;
        VxString name;
        if (feature.GetEntryByIndex(i, &entry).IsOK() && entry->IsAvailable() && entry->GetName(name).IsOK())
            facts.entries.push_back(name.Narrow());
    }
}

/// What only a camera's description tells.
void AddDescription(const VxGenParameterArray& array, FeatureFacts& facts)
{
    const auto* const nodes = dynamic_cast<const NodeParameterArray*>(&array);
    if (nodes == nullptr || nodes->Map() == nullptr)
        return;
    const genapi::NodeMap& map = *nodes->Map();
    const auto node = map.Find(facts.name);
    if (!node)
        return;
    const genapi::NodeInfo& info = map.Info(*node);
    facts.unit = info.unit;
    facts.description = info.description.empty() ? info.toolTip : info.description;
    for (const genapi::NodeId selector : map.Selectors(*node))
        facts.selectedBy.emplace_back(map.Info(selector).name);
}

} // namespace

const char* TypeName(VxGenType type)
{
    switch (type) {
    case VxGenType::Integer:
        return "Integer";
    case VxGenType::Enum:
        return "Enumeration";
    case VxGenType::Boolean:
        return "Boolean";
    case VxGenType::String:
        return "String";
    case VxGenType::Command:
        return "Command";
    case VxGenType::Float:
        return "Float";
    case VxGenType::Register:
        return "Register";
    default:
        return "-";
    }
}

const char* VisibilityName(VxGenVisibility visibility)
{
    constexpr std::array kNames{"Beginner", "Expert", "Guru", "Invisible"};
    const auto index = static_cast<std::size_t>(visibility);
    return index < kNames.size() ? kNames[index] : "-";
}

FeatureFacts ReadFacts(const VxGenParameterArray& array, VxGenParameter& feature)
{
    FeatureFacts facts;
    facts.name = feature.GetName().Narrow();
    facts.category = feature.GetCategory().Narrow();
    std::ignore = feature.GetType(facts.type);             // stays as it began
    std::ignore = feature.GetVisibility(facts.visibility); // as above
    facts.isAvailable = feature.IsAvailable();
    facts.isReadable = feature.IsReadable();
    facts.isWritable = feature.IsWritable();
    AddDescription(array, facts);
    if (!facts.isAvailable)
        return facts;
    VxString value;
    if (facts.isReadable && facts.type != VxGenType::Command) {
        const VxResult read = feature.ToString(value);
        if (read.IsOK())
            facts.value = value.Narrow();
        else
            facts.whyNoValue = read.GetDescription().Narrow();
    }
    if (const auto* const integer = dynamic_cast<const VxGenInteger*>(&feature))
        AddIntegerLimits(*integer, facts);
    else if (const auto* const number = dynamic_cast<const VxGenFloat*>(&feature))
        AddFloatLimits(*number, facts);
    else if (const auto* const choice = dynamic_cast<const VxGenEnum*>(&feature))
        AddEntries(*choice, facts);
    return facts;
}

} // namespace vxctl
