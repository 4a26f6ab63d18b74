#pragma once

#include "VxCamera/genapi/node/LimitSource.h"
#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/node/ValueSource.h"

#include <cstdint>

namespace genapi {

/// Something a camera does when a number is written: kind "Command". It can be written or not, never read:
/// asking a command's register may have effects of its own.
///
/// Owner and thread: see Node.
class CommandNode final : public Node {
public:
    CommandNode(NodeContext& context, NodeId id, std::string_view name)
        : Node(context, id, ValueType::Command, name)
    {
    }

    [[nodiscard]] VxResult Execute();

    /// @return  whether the camera has taken the command's number back; true where that cannot be read
    [[nodiscard]] VxExpected<bool> IsDone();

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;
    [[nodiscard]] AccessMode OwnAccess() override;

private:
    ValueSource<std::int64_t> m_source;
    LimitSource<std::int64_t> m_command;
};

} // namespace genapi
