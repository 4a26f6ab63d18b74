#include "VxCamera/surface/ConfigurationText.h"

#include <pugixml.hpp>

#include <algorithm>

#include "VxCamera/genapi/xml/NumberText.h"
#include "VxCamera/surface/ConfigurationEscapes.h"

namespace surface {

namespace {

constexpr std::string_view kRoot = "VxConfiguration";
constexpr std::string_view kStart = "<VxConfiguration ";
constexpr std::string_view kEnd = "</VxConfiguration>";
constexpr std::string_view kVersion = "1";

// Chosen: a hundred times what a camera with many selectors needs.
constexpr std::size_t kMaxBytes = 16 * 1024 * 1024;

// Comments are skipped, so that a saved file can carry some. Line ends stay as they are. Only the names of
// XML itself are resolved: a declared entity does not exist, and a declaration below the root is an error.
constexpr unsigned kParsing = pugi::parse_default & ~pugi::parse_eol;

// ---- writing ----

void AppendAttribute(std::string& out, std::string_view name, const VxString& value)
{
    out += ' ';
    out += name;
    out += "=\"";
    AppendEscaped(out, value);
    out += '"';
}

void AppendStart(std::string& out, std::string_view tag, const VxString& name, const VxString& value)
{
    out += '<';
    out += tag;
    AppendAttribute(out, "name", name);
    AppendAttribute(out, "value", value);
}

void AppendSteps(std::string& out, const std::vector<ConfigurationStep>& steps)
{
    std::size_t open = 0; // selectors whose element has not ended yet
    const auto close = [&](std::size_t level) {
        for (; open > level; --open)
            out += "</Select>";
    };
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const ConfigurationStep& step = steps[i];
        close(step.level);
        const bool isSelect = step.kind == ConfigurationStep::Kind::Select;
        AppendStart(out, isSelect ? "Select" : "Feature", step.name, step.value);
        const bool hasContent = isSelect && i + 1 < steps.size() && steps[i + 1].level > step.level;
        out += hasContent ? ">" : "/>";
        open += hasContent ? 1 : 0;
    }
    close(0);
}

void AppendFeatures(std::string& out, std::string_view tag, const StoredFeatures& features)
{
    out += '<';
    out += tag;
    AppendAttribute(out, "name", features.name);
    out += '>';
    AppendSteps(out, features.steps);
    out += "</";
    out += tag;
    out += '>';
}

// ---- reading ----

/// What a message can show of a name out of a text that nobody checked.
std::string Shown(std::string_view text)
{
    constexpr std::size_t kMost = 40; // chosen: longer than any name that was meant
    if (text.size() <= kMost)
        return "\"" + std::string(text) + "\"";
    std::size_t end = kMost;
    while ((static_cast<unsigned char>(text[end]) & 0xC0u) == 0x80u) // inside a character
        --end;
    return "\"" + std::string(text.substr(0, end)) + "...\"";
}

/// @param text    all of it
/// @param offset  bytes
VxResult Wrong(std::string_view text, std::size_t offset, const std::string& what)
{
    const std::size_t character = CharactersBefore(text, offset) + 1;
    return VxResult(VxError::InvalidData,
                    "the configuration is damaged at character " + std::to_string(character) + ": " + what);
}

/// Reads the document below its root element.
///
/// Owner:  ReadConfiguration, for one call.
/// Thread: one.
class Reader {
public:
    /// @param text     all of it; borrowed
    /// @param skipped  bytes of it before the document
    Reader(std::string_view text, std::size_t skipped) : m_text(text), m_skipped(skipped) {}

    VxExpected<Configuration> Read(const pugi::xml_node& root)
    {
        for (const pugi::xml_node& child : root.children()) {
            const std::string_view tag = child.name();
            if (tag == "Device")
                ReadFeatures(child, m_configuration.devices.emplace_back());
            else if (tag == "Stream")
                ReadFeatures(child, m_configuration.streams.emplace_back());
            else if (tag == "Text")
                m_configuration.texts.push_back({Attribute(child, "name"), Attribute(child, "value")});
            else
                FailUnknown(child);
        }
        if (!m_failure.IsOK())
            return m_failure;
        return std::move(m_configuration);
    }

private:
    void ReadFeatures(const pugi::xml_node& xml, StoredFeatures& features)
    {
        features.name = Attribute(xml, "name");
        // Depth first without recursion: how deep a text is nested does not matter.
        pugi::xml_node child = xml.first_child();
        std::size_t level = 0;
        while (child && m_failure.IsOK()) {
            ReadStep(child, level, features.steps);
            if (child.first_child()) {
                child = child.first_child();
                ++level;
                continue;
            }
            while (!child.next_sibling() && level > 0) {
                child = child.parent();
                --level;
            }
            child = child.next_sibling();
        }
    }

    void ReadStep(const pugi::xml_node& xml, std::size_t level, std::vector<ConfigurationStep>& steps)
    {
        const std::string_view tag = xml.name();
        const bool isSelect = tag == "Select";
        if (!isSelect && tag != "Feature")
            FailUnknown(xml);
        if (!isSelect && xml.first_child())
            Fail(xml, "a feature has no content");
        if (steps.size() >= kMaxSteps)
            Fail(xml, "there are more than " + std::to_string(kMaxSteps) + " values");
        steps.push_back({isSelect ? ConfigurationStep::Kind::Select : ConfigurationStep::Kind::Feature, level,
                         Attribute(xml, "name").Narrow(), Attribute(xml, "value").Narrow()});
    }

    VxString Attribute(const pugi::xml_node& xml, const char* name)
    {
        const pugi::xml_attribute attribute = xml.attribute(name);
        if (!attribute)
            Fail(xml, "the attribute \"" + std::string(name) + "\" is missing");
        const auto value = Unescape(attribute.value());
        if (!value)
            Fail(xml, "a backslash begins no character");
        return value.value_or(VxString());
    }

    void FailUnknown(const pugi::xml_node& xml)
    {
        const std::string tag = xml.name();
        Fail(xml, tag.empty() ? "text between the elements" : Shown(tag) + " is not known");
    }

    void Fail(const pugi::xml_node& xml, const std::string& what)
    {
        if (!m_failure.IsOK())
            return;
        const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(xml.offset_debug(), 0));
        m_failure = Wrong(m_text, m_skipped + offset, what);
    }

    const std::string_view m_text; // borrowed: outlives the call
    const std::size_t m_skipped;
    Configuration m_configuration;
    VxResult m_failure = VxResult::Ok();
};

} // namespace

std::string WriteConfiguration(const Configuration& configuration)
{
    std::string out(kStart);
    out += "version=\"" + std::string(kVersion) + "\">";
    for (const StoredFeatures& device : configuration.devices)
        AppendFeatures(out, "Device", device);
    for (const StoredFeatures& stream : configuration.streams)
        AppendFeatures(out, "Stream", stream);
    for (const StoredText& text : configuration.texts) {
        AppendStart(out, "Text", text.name, text.value);
        out += "/>";
    }
    out += kEnd;
    return out;
}

VxExpected<Configuration> ReadConfiguration(std::string_view text)
{
    if (text.size() > kMaxBytes)
        return Wrong(text, kMaxBytes, "it is longer than " + std::to_string(kMaxBytes) + " bytes");
    const std::string_view document = genapi::Trim(text);
    const auto skipped = static_cast<std::size_t>(document.empty() ? 0 : document.data() - text.data());
    if (!document.starts_with(kStart))
        return Wrong(text, skipped, "it does not begin with \"" + std::string(kStart) + "\"");
    if (const auto flaw = FindFlaw(document))
        return Wrong(text, skipped + flaw->offset, flaw->what);
    if (!document.ends_with(kEnd))
        return Wrong(text, skipped + document.size(), "it does not end with \"" + std::string(kEnd) + "\"");
    pugi::xml_document xml;
    const auto parsed = xml.load_buffer(document.data(), document.size(), kParsing, pugi::encoding_utf8);
    if (!parsed)
        return Wrong(text, skipped + static_cast<std::size_t>(parsed.offset), parsed.description());
    const pugi::xml_node root = xml.first_child();
    if (root.name() != kRoot || root.next_sibling())
        return Wrong(text, skipped, "there is more than one \"" + std::string(kRoot) + "\"");
    const std::string_view version = root.attribute("version").value();
    if (version != kVersion)
        return Wrong(text, skipped + kStart.size(),
                     "its version is " + Shown(version) + "; known is " + Shown(kVersion));
    return Reader(text, skipped).Read(root);
}

} // namespace surface
