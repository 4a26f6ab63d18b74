#include "vxctl/FeatureReport.h"

#include "vxctl/Text.h"

#include <algorithm>
#include <string_view>

namespace vxctl {
namespace {

// Chosen: most names of the standard feature list fit, and a line stays on a wide screen.
constexpr std::size_t kNameColumns = 34;
constexpr std::size_t kTypeColumns = 13;
constexpr std::size_t kAccessColumns = 4;
constexpr std::size_t kValueColumns = 28;
// Chosen: the beginning of a table or of a list of entries says what it is; the details show it whole.
constexpr std::size_t kLongestValue = 60;
constexpr std::size_t kLongestAccepted = 100;
constexpr std::size_t kIndent = 2;
constexpr std::size_t kFactColumns = 13;

// Fixed by the camera library: how every category path begins, and what stands between its components.
constexpr std::string_view kRoot = "root";
constexpr char kSeparator = '\\';

using Path = std::vector<std::string>;

Path PathOf(std::string_view category)
{
    Path path;
    while (!category.empty()) {
        const std::size_t end = std::min(category.find(kSeparator), category.size());
        path.emplace_back(category.substr(0, end));
        category.remove_prefix(std::min(end + 1, category.size()));
    }
    if (!path.empty() && path.front() == kRoot)
        path.erase(path.begin());
    return path;
}

std::string AccessText(const FeatureFacts& feature)
{
    return std::string(feature.isReadable ? "r" : "-") + (feature.isWritable ? "w" : "-");
}

std::string ValueText(const FeatureFacts& feature)
{
    if (!feature.isAvailable)
        return "(not available now)";
    if (!feature.value)
        return feature.whyNoValue.empty() ? "" : "(cannot be read)";
    const std::string value = Printable(*feature.value);
    return feature.unit.empty() ? value : value + " " + Printable(feature.unit);
}

std::string JoinedText(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : ", ") + text;
    return joined;
}

std::string FeatureLine(const FeatureFacts& feature, std::size_t depth)
{
    std::string line = std::string(depth * kIndent, ' ');
    line = Padded(line + Printable(feature.name), kIndent + kNameColumns) + " " +
           Padded(TypeName(feature.type), kTypeColumns) + Padded(AccessText(feature), kAccessColumns) +
           Padded(Shortened(ValueText(feature), kLongestValue), kValueColumns) + " " +
           Shortened(Printable(AcceptedText(feature)), kLongestAccepted);
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

/// Writes a JSON object key by key.
///
/// Owner:  FeaturesJson, for one object.
/// Thread: one.
class JsonObject {
public:
    void Add(const char* key, const std::string& json)
    {
        m_text += (m_text.empty() ? "" : ", ") + JsonText(key) + ": " + json;
    }
    void AddText(const char* key, const std::optional<std::string>& text)
    {
        if (text && !text->empty())
            Add(key, JsonText(*text));
    }
    void AddTexts(const char* key, const std::vector<std::string>& texts)
    {
        std::string list;
        for (const std::string& text : texts)
            list += (list.empty() ? "" : ", ") + JsonText(text);
        if (!texts.empty())
            Add(key, "[" + list + "]");
    }
    [[nodiscard]] std::string Text() const { return "{" + m_text + "}"; }

private:
    std::string m_text;
};

std::string FeatureJson(const FeatureFacts& feature)
{
    const auto boolean = [](bool value) { return value ? "true" : "false"; };
    JsonObject object;
    object.AddText("name", feature.name);
    object.AddText("category", feature.category);
    object.AddText("type", TypeName(feature.type));
    object.AddText("visibility", VisibilityName(feature.visibility));
    object.Add("available", boolean(feature.isAvailable));
    object.Add("readable", boolean(feature.isReadable));
    object.Add("writable", boolean(feature.isWritable));
    object.Add("value", feature.value ? JsonText(*feature.value) : "null");
    object.AddText("error", feature.whyNoValue);
    object.AddText("unit", feature.unit);
    object.AddText("minimum", feature.minimum);
    object.AddText("maximum", feature.maximum);
    object.AddText("increment", feature.increment);
    object.AddTexts("entries", feature.entries);
    object.AddTexts("selectedBy", feature.selectedBy);
    object.AddText("description", feature.description);
    return object.Text();
}

} // namespace

std::string AcceptedText(const FeatureFacts& feature)
{
    std::string text = JoinedText(feature.entries);
    if (feature.minimum && feature.maximum)
        text = *feature.minimum + " to " + *feature.maximum;
    else if (feature.minimum)
        text = "at least " + *feature.minimum;
    else if (feature.maximum)
        text = "at most " + *feature.maximum;
    if (feature.increment)
        text += (text.empty() ? "" : " ") + std::string("in steps of ") + *feature.increment;
    return text;
}

std::string FeatureTree(const std::vector<FeatureFacts>& features)
{
    std::string text;
    Path open;
    for (const FeatureFacts& feature : features) {
        const Path path = PathOf(feature.category);
        const auto common = static_cast<std::size_t>(
            std::mismatch(open.begin(), open.end(), path.begin(), path.end()).first - open.begin());
        for (std::size_t depth = common; depth < path.size(); ++depth)
            text += std::string(depth * kIndent, ' ') + Printable(path[depth]) + "\n";
        open = path;
        text += FeatureLine(feature, path.size());
    }
    return text;
}

std::string FeatureDetails(const FeatureFacts& feature)
{
    std::string text = Printable(feature.name) + "\n";
    const auto add = [&text](const char* fact, const std::string& value) {
        if (!value.empty())
            text += "  " + Padded(fact, kFactColumns) + Printable(value) + "\n";
    };
    add("value", ValueText(feature));
    add("reason", feature.whyNoValue);
    add("accepted", AcceptedText(feature));
    add("access", feature.isAvailable ? AccessText(feature) : std::string());
    add("type", TypeName(feature.type));
    add("category", feature.category);
    add("visibility", VisibilityName(feature.visibility));
    add("selected by", JoinedText(feature.selectedBy));
    add("description", feature.description);
    return text;
}

std::string FeaturesJson(const std::vector<FeatureFacts>& features)
{
    std::string text = "[";
    for (const FeatureFacts& feature : features)
        text += (text.size() > 1 ? ",\n " : "\n ") + FeatureJson(feature);
    return text + (features.empty() ? "]\n" : "\n]\n");
}

} // namespace vxctl
