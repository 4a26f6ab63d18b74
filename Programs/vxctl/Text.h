#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Text for people and for programs. All of it is UTF-8.
namespace vxctl {

/// @return  the text without control characters, which would reach the terminal: each becomes '?'. A camera's
///          texts are not to be trusted.
[[nodiscard]] std::string Printable(std::string_view text);

/// @return  number of characters, which is the number of columns for the letters that cameras use
[[nodiscard]] std::size_t ColumnsOf(std::string_view text);

/// @return  the text with blanks behind it up to a number of columns
[[nodiscard]] std::string Padded(std::string_view text, std::size_t columns);

/// @return  at most so many characters, with "..." in place of what was cut
[[nodiscard]] std::string Shortened(std::string_view text, std::size_t columns);

/// A table with a head; each column is as wide as its longest cell.
[[nodiscard]] std::string Table(const std::vector<std::vector<std::string>>& rows);

/// The text in quotes, as JSON writes it; bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string JsonText(std::string_view text);

/// @return  the name out of many that is most like a misspelt one; empty when none is
[[nodiscard]] std::string NearestName(std::string_view misspelt, const std::vector<std::string>& names);

} // namespace vxctl
