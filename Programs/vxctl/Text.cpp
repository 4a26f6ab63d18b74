#include "vxctl/Text.h"

#include "VxBase/VxString.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <numeric>
#include <utility>

namespace vxctl {
namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;
// Fixed by UTF-8: the control characters U+0080 to U+009F are this byte and one below 0xA0.
constexpr unsigned char kLeadOfUpperControls = 0xC2;
constexpr unsigned char kAfterUpperControls = 0xA0;

constexpr std::size_t kColumnGap = 2;

bool IsContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u;
}

/// Changes, insertions, removals and swaps of neighbours that make one text of the other; case does not
/// count.
std::size_t Distance(std::string_view a, std::string_view b)
{
    const auto isSame = [&](std::size_t i, std::size_t j) {
        return std::tolower(static_cast<unsigned char>(a[i])) ==
               std::tolower(static_cast<unsigned char>(b[j]));
    };
    std::vector<std::size_t> twoBefore;
    std::vector<std::size_t> before(b.size() + 1);
    std::iota(before.begin(), before.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::vector<std::size_t> row{i + 1};
        for (std::size_t j = 0; j < b.size(); ++j) {
            row.push_back(std::min({before[j] + (isSame(i, j) ? 0 : 1), before[j + 1] + 1, row[j] + 1}));
            if (i > 0 && j > 0 && isSame(i, j - 1) && isSame(i - 1, j))
                row.back() = std::min(row.back(), twoBefore[j - 1] + 1);
        }
        twoBefore = std::exchange(before, std::move(row));
    }
    return before.back();
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isUpperControl = byte == kLeadOfUpperControls && i + 1 < text.size() &&
                                    static_cast<unsigned char>(text[i + 1]) < kAfterUpperControls;
        if (isUpperControl)
            ++i;
        out += byte < kFirstPrintable || byte == kDelete || isUpperControl ? '?' : text[i];
    }
    return VxString(VxString(out).Wide()).Narrow(); // valid UTF-8 in any case
}

std::size_t ColumnsOf(std::string_view text)
{
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

std::string Padded(std::string_view text, std::size_t columns)
{
    const std::size_t used = ColumnsOf(text);
    return std::string(text).append(used < columns ? columns - used : 0, ' ');
}

std::string Shortened(std::string_view text, std::size_t columns)
{
    constexpr std::string_view kMark = "...";
    if (ColumnsOf(text) <= columns)
        return std::string(text);
    std::size_t end = 0;
    for (std::size_t kept = 0; kept + kMark.size() < columns; ++kept) {
        ++end;
        while (end < text.size() && IsContinuation(text[end]))
            ++end;
    }
    return std::string(text.substr(0, end)).append(kMark);
}

std::string Table(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], ColumnsOf(row[i]));
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += Padded(row[i], widths[i] + kColumnGap);
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

std::string JsonText(std::string_view text)
{
    constexpr int kHexadecimal = 16;
    constexpr std::size_t kDigits = 4;
    std::string out = "\"";
    const VxString valid(VxString(text).Wide());
    for (const char c : valid.Narrow()) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < kFirstPrintable || byte == kDelete) {
            std::array<char, kDigits> digits{};
            const auto end =
                std::to_chars(digits.data(), digits.data() + digits.size(), unsigned{byte}, kHexadecimal).ptr;
            const auto used = static_cast<std::size_t>(end - digits.data());
            out.append("\\u").append(kDigits - used, '0').append(digits.data(), used);
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string NearestName(std::string_view misspelt, const std::vector<std::string>& names)
{
    // Chosen: a third of the letters wrong is another word.
    const std::size_t most = misspelt.size() / 3;
    std::string nearest;
    std::size_t smallest = most + 1;
    for (const std::string& name : names) {
        const std::size_t distance = Distance(misspelt, name);
        if (distance >= smallest)
            continue;
        smallest = distance;
        nearest = name;
    }
    return nearest;
}

} // namespace vxctl
