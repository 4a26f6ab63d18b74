#pragma once

#include "VxCamera/genapi/xml/Description.h"

#include <cstdint>
#include <string>
#include <vector>

namespace genapi {

/// A leaf of the tree of categories, as an index into the description.
struct ListedFeature {
    std::uint32_t node = 0;
    std::string category;
};

/// The features that the category "Root" leads to, depth first in the order of the file, each under the
/// category that names it first. A description without "Root" lists the nodes that no other node uses.
[[nodiscard]] std::vector<ListedFeature> ListFeatures(const Description& description);

} // namespace genapi
