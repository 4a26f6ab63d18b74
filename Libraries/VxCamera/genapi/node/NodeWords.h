#pragma once

#include "VxCamera/genapi/node/NodeTypes.h"

#include <optional>
#include <string_view>

namespace genapi {

/// Words of a description as values; nothing for a word that is none.
[[nodiscard]] std::optional<AccessMode> ParseAccessMode(std::string_view word);
[[nodiscard]] std::optional<Visibility> ParseVisibility(std::string_view word);
[[nodiscard]] std::optional<Representation> ParseRepresentation(std::string_view word);
[[nodiscard]] std::optional<DisplayNotation> ParseDisplayNotation(std::string_view word);

/// "Yes" and "No", and "true", "false", "1", "0" in any case.
[[nodiscard]] std::optional<bool> ParseYesNo(std::string_view word);

} // namespace genapi
