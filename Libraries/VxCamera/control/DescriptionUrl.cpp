#include "VxCamera/control/DescriptionUrl.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace control {

namespace {

constexpr int kHexadecimal = 16;

char Lower(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character; // ASCII
}

bool StartsWith(std::string_view text, std::string_view lowerPrefix)
{
    return text.size() >= lowerPrefix.size() &&
           std::ranges::equal(text.substr(0, lowerPrefix.size()), lowerPrefix, {}, Lower);
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<std::uint32_t> ParseHex(std::string_view text)
{
    text = Trimmed(text);
    if (StartsWith(text, "0x"))
        text.remove_prefix(2);
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, kHexadecimal);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

/// Takes the text up to the next semicolon off the front.
std::string_view TakeField(std::string_view& text)
{
    const auto end = std::min(text.find(';'), text.size());
    const auto field = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return Trimmed(field);
}

VxExpected<DescriptionUrl> ParseInDevice(std::string_view rest, std::string_view whole)
{
    rest = rest.substr(0, rest.find('?'));
    rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
    DescriptionUrl url;
    url.name = TakeField(rest);
    const auto address = ParseHex(TakeField(rest));
    const auto length = ParseHex(TakeField(rest));
    if (!address || !length)
        return VxResult(VxError::InvalidData,
                        "no address and length in the description's URL \"" + std::string(whole) + "\"");
    url.address = *address;
    url.lengthBytes = *length;
    return url;
}

} // namespace

VxExpected<DescriptionUrl> ParseDescriptionUrl(std::string_view text)
{
    const std::string_view whole = Trimmed(text.substr(0, text.find('\0')));
    if (whole.empty())
        return VxResult(VxError::NotFound, "the description's URL is empty");
    constexpr std::string_view kLocal = "local:";
    constexpr std::string_view kFile = "file:";
    constexpr std::string_view kHttp = "http:";
    constexpr std::string_view kHttps = "https:";
    if (StartsWith(whole, kLocal))
        return ParseInDevice(whole.substr(kLocal.size()), whole);
    if (StartsWith(whole, kFile))
        return DescriptionUrl{DescriptionUrl::Place::File, std::string(whole.substr(kFile.size())), 0, 0};
    if (StartsWith(whole, kHttp) || StartsWith(whole, kHttps))
        return DescriptionUrl{DescriptionUrl::Place::Http, std::string(whole), 0, 0};
    return VxResult(VxError::InvalidData,
                    "the description's URL \"" + std::string(whole) + "\" is of an unknown kind");
}

} // namespace control
