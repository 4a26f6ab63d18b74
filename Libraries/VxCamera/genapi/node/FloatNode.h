#pragma once

#include "VxCamera/genapi/node/LimitSource.h"
#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/node/ValueSource.h"

namespace genapi {

/// A float that other nodes give, or a variable of the map: kind "Float".
///
/// Owner and thread: see Node.
class FloatNode final : public Node {
public:
    FloatNode(NodeContext& context, NodeId id, std::string_view name)
        : Node(context, id, ValueType::Float, name)
    {
    }

    [[nodiscard]] Node* FixedTarget() const override { return m_source.FixedTarget(); }
    [[nodiscard]] bool IsSinglePrecision() const override;

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;
    [[nodiscard]] AccessMode OwnAccess() override { return m_source.Access(*this); }
    [[nodiscard]] VxExpected<double> DoGetFloat() override { return m_source.Get(*this); }
    [[nodiscard]] VxResult DoSetFloat(double value) override;
    [[nodiscard]] VxExpected<FloatLimits> DoGetFloatLimits() override;

private:
    [[nodiscard]] VxResult CheckIncrement(double value);
    bool ApplyLimit(const NodeProperty& property);

    ValueSource<double> m_source;
    LimitSource<double> m_minimum;
    LimitSource<double> m_maximum;
    LimitSource<double> m_increment;
};

} // namespace genapi
