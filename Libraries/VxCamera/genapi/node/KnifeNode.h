#pragma once

#include "VxCamera/genapi/node/FormulaSet.h"
#include "VxCamera/genapi/node/Node.h"

namespace genapi {

/// A number computed from other nodes: kinds "SwissKnife" (float) and "IntSwissKnife" (integer).
///
/// Owner and thread: see Node.
class KnifeNode final : public Node {
public:
    /// @param type  Integer or Float; the arithmetic follows it
    KnifeNode(NodeContext& context, NodeId id, ValueType type, std::string_view name)
        : Node(context, id, type, name),
          m_formulas(*this, context, type == ValueType::Float ? Arithmetic::Float : Arithmetic::Integer)
    {
    }

protected:
    void Apply(const NodeProperty& property) override { m_formulas.Apply(property); }
    void Finish() override;
    [[nodiscard]] AccessMode OwnAccess() override { return m_formulas.Access(); }
    [[nodiscard]] VxExpected<std::int64_t> DoGetInteger() override;
    [[nodiscard]] VxResult DoSetInteger(std::int64_t value) override;
    [[nodiscard]] VxExpected<IntegerLimits> DoGetIntegerLimits() override;
    [[nodiscard]] VxExpected<double> DoGetFloat() override;
    [[nodiscard]] VxResult DoSetFloat(double value) override;
    [[nodiscard]] VxExpected<FloatLimits> DoGetFloatLimits() override;

private:
    FormulaSet m_formulas;
};

} // namespace genapi
