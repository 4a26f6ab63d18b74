#pragma once

#include "VxCamera/genapi/node/FormulaSet.h"
#include "VxCamera/genapi/node/Node.h"

namespace genapi {

/// A number that another node keeps in other units: kinds "Converter" (float) and "IntConverter" (integer).
///
/// FormulaFrom computes the value from the other node's, FormulaTo the other node's from a new value.
///
/// Owner and thread: see Node.
class ConverterNode final : public Node {
public:
    /// @param type  Integer or Float; the arithmetic follows it
    ConverterNode(NodeContext& context, NodeId id, ValueType type, std::string_view name)
        : Node(context, id, type, name),
          m_formulas(*this, context, type == ValueType::Float ? Arithmetic::Float : Arithmetic::Integer)
    {
    }

    [[nodiscard]] Node* FixedTarget() const override { return m_target; }

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;
    [[nodiscard]] AccessMode OwnAccess() override;
    [[nodiscard]] VxExpected<std::int64_t> DoGetInteger() override;
    [[nodiscard]] VxResult DoSetInteger(std::int64_t value) override;
    [[nodiscard]] VxExpected<IntegerLimits> DoGetIntegerLimits() override;
    [[nodiscard]] VxExpected<double> DoGetFloat() override;
    [[nodiscard]] VxResult DoSetFloat(double value) override;
    [[nodiscard]] VxExpected<FloatLimits> DoGetFloatLimits() override;

private:
    enum class Slope : std::uint8_t { Increasing, Decreasing, Unknown };

    [[nodiscard]] bool IsFloat() const { return Info().type == ValueType::Float; }
    [[nodiscard]] VxExpected<std::int64_t> IntegerEnd(std::int64_t limit, std::int64_t open);
    [[nodiscard]] VxExpected<double> FloatEnd(double limit, double open);
    [[nodiscard]] VxExpected<std::int64_t> IntegerFrom(std::int64_t value);
    [[nodiscard]] VxExpected<double> FloatFrom(double value);

    FormulaSet m_formulas;
    Node* m_target = nullptr; // borrowed from the map
    Slope m_slope = Slope::Unknown;
    bool m_isLinear = false;
};

} // namespace genapi
