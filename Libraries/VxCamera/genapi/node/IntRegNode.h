#pragma once

#include "VxCamera/genapi/node/RegisterNode.h"

#include <optional>

namespace genapi {

/// An integer in a register or in some bits of one: kinds "IntReg", "MaskedIntReg" and entries of structures.
///
/// Owner and thread: see Node.
class IntRegNode final : public RegisterNode {
public:
    IntRegNode(NodeContext& context, NodeId id, std::string_view name)
        : RegisterNode(context, id, ValueType::Integer, name)
    {
    }

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;
    [[nodiscard]] VxExpected<std::int64_t> DoGetInteger() override;
    [[nodiscard]] VxResult DoSetInteger(std::int64_t value) override;
    [[nodiscard]] VxExpected<IntegerLimits> DoGetIntegerLimits() override;

private:
    /// @return  INVALID_DATA for a register of more than 8 bytes or with bits outside of it
    [[nodiscard]] VxExpected<BitField> Field(std::size_t length) const;

    std::optional<std::int64_t> m_lsb;
    std::optional<std::int64_t> m_msb;
    Signedness m_signedness = Signedness::Unsigned;
};

} // namespace genapi
