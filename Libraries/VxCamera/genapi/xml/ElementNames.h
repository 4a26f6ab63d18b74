#pragma once

#include "VxCamera/genapi/xml/DescriptionTypes.h"

#include <optional>
#include <string_view>

namespace genapi {

/// @param name  without name space prefix
[[nodiscard]] std::optional<Element> FindElement(std::string_view name);

/// Name of an element as the file has it; "" for those that only exist inside.
[[nodiscard]] std::string_view NameOf(Element element);

/// @return  nothing for names that are no node: Group and StructReg have to be handled before
[[nodiscard]] std::optional<NodeKind> FindNodeKind(std::string_view name);

} // namespace genapi
