#pragma once

#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/xml/DescriptionTypes.h"

#include <memory>

namespace genapi {

/// @return  the node for a kind, not yet configured
[[nodiscard]] std::unique_ptr<Node> MakeNode(NodeContext& context, NodeId id,
                                             const NodeDescription& description);

} // namespace genapi
