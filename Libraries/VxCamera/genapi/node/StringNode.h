#pragma once

#include "VxCamera/genapi/node/Node.h"

#include <string>

namespace genapi {

/// A text that another node gives, or a variable of the map: kind "String".
///
/// Owner and thread: see Node.
class StringNode final : public Node {
public:
    StringNode(NodeContext& context, NodeId id, std::string_view name)
        : Node(context, id, ValueType::String, name)
    {
    }

protected:
    void Apply(const NodeProperty& property) override;
    [[nodiscard]] AccessMode OwnAccess() override;
    [[nodiscard]] VxExpected<std::string> DoGetString() override;
    [[nodiscard]] VxResult DoSetString(std::string_view value) override;

private:
    Node* m_target = nullptr; // borrowed from the map; null for a variable
    std::string m_value;
};

} // namespace genapi
