#pragma once

#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/node/ValueSource.h"

#include <cstdint>
#include <optional>

namespace genapi {

/// A truth value kept as one of two numbers: kind "Boolean". As an integer it is 0 or 1.
///
/// Owner and thread: see Node.
class BooleanNode final : public Node {
public:
    BooleanNode(NodeContext& context, NodeId id, std::string_view name)
        : Node(context, id, ValueType::Boolean, name)
    {
    }

    [[nodiscard]] Node* FixedTarget() const override { return m_source.FixedTarget(); }

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;
    [[nodiscard]] AccessMode OwnAccess() override { return m_source.Access(*this); }
    [[nodiscard]] VxExpected<std::int64_t> DoGetInteger() override;
    [[nodiscard]] VxResult DoSetInteger(std::int64_t value) override;
    [[nodiscard]] VxExpected<IntegerLimits> DoGetIntegerLimits() override;

private:
    ValueSource<std::int64_t> m_source;
    std::optional<bool> m_initial; // a value of its own, until OnValue and OffValue are known
    std::int64_t m_on = 1;
    std::int64_t m_off = 0;
};

} // namespace genapi
