#include "VxCamera/genapi/xml/NumberText.h"

#include <charconv>
#include <cmath>

namespace genapi {

namespace {

constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;

// 2^63 and 2^64, exact as doubles.
constexpr double kSignedLimit = 9223372036854775808.0;

bool HasHexPrefix(std::string_view text)
{
    return text.starts_with("0x") || text.starts_with("0X");
}

template <typename T>
std::optional<T> ParseWhole(std::string_view text, int base)
{
    T value{};
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value, base);
    return error == std::errc() && end == last && !text.empty() ? std::optional(value) : std::nullopt;
}

std::optional<double> ParseDecimalFloat(std::string_view text)
{
    double value = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    return error == std::errc() && end == last && !text.empty() ? std::optional(value) : std::nullopt;
}

std::string_view WithoutPlus(std::string_view text)
{
    return text.size() > 1 && text[0] == '+' && text[1] != '-' ? text.substr(1) : text;
}

} // namespace

std::optional<std::int64_t> ParseInteger(std::string_view text)
{
    text = WithoutPlus(Trim(text));
    if (HasHexPrefix(text)) {
        const auto pattern = ParseHexadecimal(text);
        return pattern ? std::optional(static_cast<std::int64_t>(*pattern)) : std::nullopt;
    }
    if (const auto value = ParseWhole<std::int64_t>(text, kDecimal))
        return value;
    if (const auto pattern = ParseWhole<std::uint64_t>(text, kDecimal))
        return static_cast<std::int64_t>(*pattern);
    const auto number = ParseDecimalFloat(text);
    if (!number || !(std::abs(*number) < kSignedLimit) || std::trunc(*number) != *number)
        return std::nullopt;
    return static_cast<std::int64_t>(*number);
}

std::optional<std::uint64_t> ParseHexadecimal(std::string_view text)
{
    text = Trim(text);
    if (HasHexPrefix(text))
        text.remove_prefix(2);
    return ParseWhole<std::uint64_t>(text, kHexadecimal);
}

std::optional<double> ParseFloat(std::string_view text)
{
    text = WithoutPlus(Trim(text));
    if (HasHexPrefix(text)) {
        const auto value = ParseInteger(text);
        return value ? std::optional(static_cast<double>(*value)) : std::nullopt;
    }
    return ParseDecimalFloat(text);
}

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

} // namespace genapi
