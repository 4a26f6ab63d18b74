#include "VxCamera/surface/ConfigurationText.h"

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>

#include "VxCamera/genapi/xml/NumberText.h"
#include "VxCamera/genapi/xml/Utf8.h"

namespace surface {

namespace {

constexpr std::string_view kRoot = "VxConfiguration";
constexpr std::string_view kStart = "<VxConfiguration ";
constexpr std::string_view kEnd = "</VxConfiguration>";
constexpr std::string_view kVersion = "1";

// Chosen: a hundred times what a camera with many selectors needs.
constexpr std::size_t kMaxCharacters = 16 * 1024 * 1024;

constexpr int kHexadecimal = 16;
constexpr std::size_t kByteDigits = 2;
constexpr std::size_t kUnitDigits = 4;

// Fixed by Unicode.
constexpr std::uint32_t kFirstPrintable = 0x20;
constexpr std::uint32_t kDelete = 0x7F;
constexpr std::uint32_t kFirstNonAscii = 0x80;
constexpr std::uint32_t kFirstNonCharacter = 0xFFFE; // this one and the next are forbidden in XML 1.0
constexpr std::uint32_t kLastNonCharacter = 0xFFFF;

std::string Hexadecimal(std::uint32_t value, std::size_t digits)
{
    std::array<char, 2 * sizeof(value)> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, kHexadecimal).ptr;
    const std::string text(buffer.data(), end);
    return std::string(digits > text.size() ? digits - text.size() : 0, '0') + text;
}

// ---- writing ----

struct Character {
    std::uint32_t codePoint = 0;
    std::size_t bytes = 0; // 0: the byte is no UTF-8
};

/// The character at the start of a text that is not empty.
Character FirstCharacter(std::string_view text)
{
    const auto byte = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
    };
    const std::uint32_t first = byte(0);
    if (first < kFirstNonAscii)
        return {first, 1};
    const std::size_t length = first >= 0xF0 ? 4 : (first >= 0xE0 ? 3 : 2);
    if (length > text.size() || !genapi::IsUtf8(text.substr(0, length)))
        return {first, 0};
    std::uint32_t codePoint = first & (0xFFu >> (length + 1)); // the bits behind the mark of the length
    for (std::size_t i = 1; i < length; ++i)
        codePoint = (codePoint << 6) | (byte(i) & 0x3Fu);
    return {codePoint, length};
}

void AppendCharacter(std::string& out, Character character)
{
    const std::uint32_t code = character.codePoint;
    if (character.bytes == 0 || code < kFirstPrintable || code == kDelete)
        out += "\\x" + Hexadecimal(code, kByteDigits);
    else if (code == kFirstNonCharacter || code == kLastNonCharacter)
        out += "\\u" + Hexadecimal(code, kUnitDigits);
    else if (code >= kFirstNonAscii)
        out += "&#x" + Hexadecimal(code, 1) + ";";
    else if (code == '\\')
        out += "\\\\";
    else if (code == '&')
        out += "&amp;";
    else if (code == '<')
        out += "&lt;";
    else if (code == '>')
        out += "&gt;";
    else if (code == '"')
        out += "&quot;";
    else
        out += static_cast<char>(code);
}

void AppendAttribute(std::string& out, std::string_view name, std::string_view value)
{
    out += ' ';
    out += name;
    out += "=\"";
    while (!value.empty()) {
        const Character character = FirstCharacter(value);
        AppendCharacter(out, character);
        value.remove_prefix(character.bytes == 0 ? 1 : character.bytes);
    }
    out += '"';
}

void AppendStart(std::string& out, std::string_view tag, std::string_view name, std::string_view value)
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

/// @return  nothing for a backslash that does not begin one of the forms above
std::optional<std::string> Unescape(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const std::size_t plain = text.find('\\');
        out += text.substr(0, plain);
        if (plain == std::string_view::npos)
            return out;
        text.remove_prefix(plain + 1);
        if (text.starts_with('\\')) {
            out += '\\';
            text.remove_prefix(1);
            continue;
        }
        const bool isByte = text.starts_with('x');
        const std::size_t digits = isByte ? kByteDigits : kUnitDigits;
        if ((!isByte && !text.starts_with('u')) || text.size() < 1 + digits)
            return std::nullopt;
        std::uint32_t code = 0;
        const char* const last = text.data() + 1 + digits;
        const auto [end, error] = std::from_chars(text.data() + 1, last, code, kHexadecimal);
        if (error != std::errc() || end != last)
            return std::nullopt;
        if (isByte)
            out += static_cast<char>(code);
        else if (code == kFirstNonCharacter || code == kLastNonCharacter)
            out += code == kFirstNonCharacter ? "\xEF\xBF\xBE" : "\xEF\xBF\xBF";
        else
            return std::nullopt;
        text.remove_prefix(1 + digits);
    }
    return out;
}

VxResult Wrong(std::size_t character, const std::string& what)
{
    return VxResult(VxError::InvalidData, "the configuration is damaged at character " +
                                              std::to_string(character + 1) + ": " + what);
}

/// Reads the document below its root element.
///
/// Owner:  ReadConfiguration, for one call.
/// Thread: one.
class Reader {
public:
    /// @param skipped  characters of the text before the document
    explicit Reader(std::size_t skipped) : m_skipped(skipped) {}

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
                Fail(child, "\"" + std::string(tag) + "\" is not known");
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
        if (!isSelect && (tag != "Feature" || xml.first_child()))
            Fail(xml, "\"" + std::string(tag) + "\" is not known");
        steps.push_back({isSelect ? ConfigurationStep::Kind::Select : ConfigurationStep::Kind::Feature, level,
                         Attribute(xml, "name"), Attribute(xml, "value")});
    }

    std::string Attribute(const pugi::xml_node& xml, const char* name)
    {
        const pugi::xml_attribute attribute = xml.attribute(name);
        if (!attribute)
            Fail(xml, "the attribute \"" + std::string(name) + "\" is missing");
        const auto value = Unescape(attribute.value());
        if (!value)
            Fail(xml, "a backslash begins no character");
        return value.value_or(std::string());
    }

    void Fail(const pugi::xml_node& xml, const std::string& what)
    {
        const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(xml.offset_debug(), 0));
        if (m_failure.IsOK())
            m_failure = Wrong(m_skipped + offset, what);
    }

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
    if (text.size() > kMaxCharacters)
        return VxResult(VxError::InvalidData,
                        "the configuration has more than " + std::to_string(kMaxCharacters) + " characters");
    const std::string_view document = genapi::Trim(text);
    const auto skipped = static_cast<std::size_t>(document.empty() ? 0 : document.data() - text.data());
    if (!document.starts_with(kStart))
        return Wrong(skipped, "it does not begin with \"" + std::string(kStart) + "\"");
    if (!document.ends_with(kEnd))
        return Wrong(skipped + document.size(), "it does not end with \"" + std::string(kEnd) + "\"");
    pugi::xml_document xml;
    const auto parsed = xml.load_buffer(document.data(), document.size(), pugi::parse_full & ~pugi::parse_eol,
                                        pugi::encoding_utf8);
    if (!parsed)
        return Wrong(skipped + static_cast<std::size_t>(parsed.offset), parsed.description());
    const pugi::xml_node root = xml.first_child();
    if (root.name() != kRoot || root.next_sibling())
        return Wrong(skipped, "there is more than one \"" + std::string(kRoot) + "\"");
    const std::string_view version = root.attribute("version").value();
    if (version != kVersion)
        return Wrong(skipped, "its version is \"" + std::string(version) + "\"; known is \"" +
                                  std::string(kVersion) + "\"");
    return Reader(skipped).Read(root);
}

} // namespace surface
