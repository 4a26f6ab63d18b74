#pragma once

#include "VxCamera/genapi/node/RegisterNode.h"

namespace genapi {

/// An IEEE 754 number of 4 or 8 bytes in a register: kind "FloatReg".
///
/// Owner and thread: see Node.
class FloatRegNode final : public RegisterNode {
public:
    FloatRegNode(NodeContext& context, NodeId id, std::string_view name)
        : RegisterNode(context, id, ValueType::Float, name)
    {
    }

    [[nodiscard]] bool IsSinglePrecision() const override;

protected:
    void Finish() override;
    [[nodiscard]] VxExpected<double> DoGetFloat() override;
    [[nodiscard]] VxResult DoSetFloat(double value) override;
    [[nodiscard]] VxExpected<FloatLimits> DoGetFloatLimits() override;

private:
    [[nodiscard]] VxResult WrongLength(std::size_t length) const;
};

} // namespace genapi
