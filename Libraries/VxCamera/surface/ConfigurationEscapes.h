#pragma once

#include "VxBase/VxString.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace surface {

/// Appends a text in the form that it has inside an attribute: printable ASCII only, whatever the text holds.
///
/// Characters beyond ASCII become references (&#x4e2d;). What XML 1.0 cannot hold, and the backslash, become
///     \\      a backslash
///     \x0a    one byte: a control character, or a byte that is no UTF-8
///     \ufffe  one 16-bit unit: a non-character, or half of a surrogate pair without its other half
void AppendEscaped(std::string& out, const VxString& text);

/// The reverse for an attribute's value, in which XML's own references have been resolved.
/// @return  nothing for a backslash that does not begin one of the forms above
[[nodiscard]] std::optional<VxString> Unescape(std::string_view value);

/// Where a document holds what no configuration does and an XML parser would pass over: bytes that are no
/// UTF-8, control characters, references to anything but a character.
struct Flaw {
    std::size_t offset = 0; ///< bytes
    std::string what;
};
[[nodiscard]] std::optional<Flaw> FindFlaw(std::string_view document);

/// @return  number of characters in front of a place in UTF-8 text
[[nodiscard]] std::size_t CharactersBefore(std::string_view text, std::size_t offset);

} // namespace surface
