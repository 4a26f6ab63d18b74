#pragma once

#include "VxCamera/genapi/node/RegisterNode.h"

namespace genapi {

/// A text in a register, ended by a NUL or by the register's end: kind "StringReg".
///
/// Owner and thread: see Node.
class StringRegNode final : public RegisterNode {
public:
    StringRegNode(NodeContext& context, NodeId id, std::string_view name)
        : RegisterNode(context, id, ValueType::String, name)
    {
    }

protected:
    [[nodiscard]] VxExpected<std::string> DoGetString() override;
    /// Fills the register behind the text with NULs.
    [[nodiscard]] VxResult DoSetString(std::string_view value) override;
};

} // namespace genapi
