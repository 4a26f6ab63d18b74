#include "VxCamera/surface/ConfigurationEscapes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

#include "VxCamera/genapi/xml/Utf8.h"

namespace surface {

namespace {

constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;
constexpr std::size_t kByteDigits = 2;
constexpr std::size_t kUnitDigits = 4;

// Fixed by Unicode.
constexpr std::uint32_t kFirstPrintable = 0x20;
constexpr std::uint32_t kDelete = 0x7F;
constexpr std::uint32_t kFirstNonAscii = 0x80;
constexpr std::uint32_t kFirstSurrogate = 0xD800;
constexpr std::uint32_t kLastSurrogate = 0xDFFF;
constexpr std::uint32_t kFirstLowSurrogate = 0xDC00;
constexpr std::uint32_t kFirstNonCharacter = 0xFFFE; // this one and the next are forbidden in XML 1.0
constexpr std::uint32_t kLastNonCharacter = 0xFFFF;
constexpr std::uint32_t kLastCodePoint = 0x10FFFF;

// Chosen: longer than any reference to a character that anybody writes.
constexpr std::size_t kLongestReference = 12;

std::string Hexadecimal(std::uint32_t value, std::size_t digits)
{
    std::array<char, 2 * sizeof(value)> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, kHexadecimal).ptr;
    const std::string text(buffer.data(), end);
    return std::string(digits > text.size() ? digits - text.size() : 0, '0') + text;
}

/// @return  nothing unless the whole text is one number
std::optional<std::uint32_t> Number(std::string_view text, int base)
{
    std::uint32_t value = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value, base);
    return error == std::errc() && end == last && !text.empty() ? std::optional(value) : std::nullopt;
}

constexpr bool IsSurrogate(std::uint32_t code)
{
    return code >= kFirstSurrogate && code <= kLastSurrogate;
}

constexpr bool IsNonCharacter(std::uint32_t code)
{
    return code == kFirstNonCharacter || code == kLastNonCharacter;
}

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
    else if (IsNonCharacter(code))
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

void AppendNarrow(std::string& out, std::string_view text)
{
    while (!text.empty()) {
        const Character character = FirstCharacter(text);
        AppendCharacter(out, character);
        text.remove_prefix(character.bytes == 0 ? 1 : character.bytes);
    }
}

/// @return  place of the first half of a surrogate pair that stands alone; the text's length when there is
/// none
std::size_t FindLoneSurrogate(std::wstring_view text)
{
    const auto isHalf = [&](std::size_t i) {
        return i < text.size() && IsSurrogate(static_cast<std::uint32_t>(text[i]));
    };
    const auto isLow = [&](std::size_t i) {
        return isHalf(i) && static_cast<std::uint32_t>(text[i]) >= kFirstLowSurrogate;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isHalf(i))
            continue;
        if (isLow(i) || !isLow(i + 1))
            return i;
        ++i;
    }
    return text.size();
}

/// Takes a text apart at its backslashes.
///
/// Owner:  Unescape, for one call.
/// Thread: one.
class Unescaper {
public:
    [[nodiscard]] std::optional<VxString> Run(std::string_view text)
    {
        for (;;) {
            const std::size_t plain = text.find('\\');
            m_narrow += text.substr(0, plain);
            if (plain == std::string_view::npos)
                return Result();
            text.remove_prefix(plain + 1);
            const std::size_t taken = Take(text);
            if (taken == 0)
                return std::nullopt;
            text.remove_prefix(taken);
        }
    }

private:
    /// @param text  what follows a backslash
    /// @return  number of characters used; 0 for an unknown form
    std::size_t Take(std::string_view text)
    {
        if (text.starts_with('\\')) {
            m_narrow += '\\';
            return 1;
        }
        const bool isByte = text.starts_with('x');
        const std::size_t digits = isByte ? kByteDigits : kUnitDigits;
        if ((!isByte && !text.starts_with('u')) || text.size() < 1 + digits)
            return 0;
        const auto code = Number(text.substr(1, digits), kHexadecimal);
        if (!code || (!isByte && !TakeUnit(*code)))
            return 0;
        if (isByte)
            m_narrow += static_cast<char>(*code);
        return 1 + digits;
    }

    bool TakeUnit(std::uint32_t code)
    {
        if (IsNonCharacter(code)) {
            m_narrow += code == kFirstNonCharacter ? "\xEF\xBF\xBE" : "\xEF\xBF\xBF";
            return true;
        }
        if (!IsSurrogate(code))
            return false;
        // From here on the narrow form cannot say what the text is.
        m_wide += VxWideFromUtf8(m_narrow);
        m_narrow.clear();
        m_wide += static_cast<wchar_t>(code);
        return true;
    }

    [[nodiscard]] VxString Result() const
    {
        return m_wide.empty() ? VxString(m_narrow) : VxString(m_wide + VxWideFromUtf8(m_narrow));
    }

    std::wstring m_wide; // what comes before m_narrow, if there was half of a surrogate pair
    std::string m_narrow;
};

/// @param text  what follows an ampersand
bool IsReferenceToCharacter(std::string_view text)
{
    const std::size_t end = text.substr(0, kLongestReference).find(';');
    if (end == std::string_view::npos)
        return false;
    std::string_view name = text.substr(0, end);
    constexpr std::array kNames{std::string_view("amp"), std::string_view("lt"), std::string_view("gt"),
                                std::string_view("quot"), std::string_view("apos")};
    if (!name.starts_with('#'))
        return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
    const bool isHexadecimal = name.starts_with("#x");
    const auto code = Number(name.substr(isHexadecimal ? 2 : 1), isHexadecimal ? kHexadecimal : kDecimal);
    if (!code)
        return false;
    const bool isBlank = *code == '\t' || *code == '\n' || *code == '\r';
    return (*code >= kFirstPrintable || isBlank) && !IsSurrogate(*code) && !IsNonCharacter(*code) &&
           *code <= kLastCodePoint;
}

} // namespace

void AppendEscaped(std::string& out, const VxString& text)
{
    std::wstring_view wide = text.Wide();
    std::size_t lone = FindLoneSurrogate(wide);
    if (lone == wide.size()) {
        AppendNarrow(out, text.Narrow());
        return;
    }
    for (; lone < wide.size(); lone = FindLoneSurrogate(wide)) {
        AppendNarrow(out, VxUtf8FromWide(wide.substr(0, lone)));
        out += "\\u" + Hexadecimal(static_cast<std::uint32_t>(wide[lone]), kUnitDigits);
        wide.remove_prefix(lone + 1);
    }
    AppendNarrow(out, VxUtf8FromWide(wide));
}

std::optional<VxString> Unescape(std::string_view value)
{
    return Unescaper().Run(value);
}

std::optional<Flaw> FindFlaw(std::string_view document)
{
    for (std::size_t offset = 0; offset < document.size();) {
        const std::string_view rest = document.substr(offset);
        const Character character = FirstCharacter(rest);
        const std::uint32_t code = character.codePoint;
        if (character.bytes == 0)
            return Flaw{offset, "a byte that is no UTF-8"};
        if (code < kFirstPrintable && code != '\t' && code != '\n' && code != '\r')
            return Flaw{offset, "a control character"};
        if (code == '&' && !IsReferenceToCharacter(rest.substr(1)))
            return Flaw{offset, "an ampersand that begins no character"};
        offset += character.bytes;
    }
    return std::nullopt;
}

std::size_t CharactersBefore(std::string_view text, std::size_t offset)
{
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u; };
    const std::string_view before = text.substr(0, offset);
    return static_cast<std::size_t>(std::count_if(before.begin(), before.end(), isFirstByte));
}

} // namespace surface
