#pragma once

#include "VxCamera/genapi/node/LimitSource.h"
#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/node/ValueSource.h"

#include <cstdint>
#include <string>
#include <vector>

namespace genapi {

/// An integer that other nodes give, or a variable of the map: kind "Integer".
///
/// Owner and thread: see Node.
class IntegerNode final : public Node {
public:
    IntegerNode(NodeContext& context, NodeId id, std::string_view name)
        : Node(context, id, ValueType::Integer, name)
    {
    }

    [[nodiscard]] Node* FixedTarget() const override { return m_source.FixedTarget(); }

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;
    [[nodiscard]] AccessMode OwnAccess() override { return m_source.Access(*this); }
    [[nodiscard]] VxExpected<std::int64_t> DoGetInteger() override { return m_source.Get(*this); }
    [[nodiscard]] VxResult DoSetInteger(std::int64_t value) override;
    [[nodiscard]] VxExpected<IntegerLimits> DoGetIntegerLimits() override;

private:
    bool ApplyLimit(const NodeProperty& property);
    void ApplyMaximum(const NodeProperty& property);
    void ApplyValidValues(const NodeProperty& property);
    [[nodiscard]] std::string KnownValues() const;

    ValueSource<std::int64_t> m_source;
    LimitSource<std::int64_t> m_minimum;
    LimitSource<std::int64_t> m_maximum;
    LimitSource<std::int64_t> m_increment;
    std::vector<std::int64_t> m_validValues; // empty: all between the limits
};

} // namespace genapi
