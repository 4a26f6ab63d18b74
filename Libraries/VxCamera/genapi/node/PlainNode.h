#pragma once

#include "VxCamera/genapi/node/Node.h"

namespace genapi {

/// A node without a value: kinds "Node" and "Category", and those of other buses.
///
/// Owner and thread: see Node.
class PlainNode final : public Node {
public:
    using Node::Node;

protected:
    [[nodiscard]] AccessMode OwnAccess() override
    {
        return Info().type == ValueType::Category ? AccessMode::ReadOnly : AccessMode::NotImplemented;
    }
};

} // namespace genapi
