#pragma once

#include "VxCamera/genapi/node/Node.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace genapi {

/// One entry of an enumeration: kind "EnumEntry".
///
/// Owner and thread: see Node.
class EnumEntryNode final : public Node {
public:
    EnumEntryNode(NodeContext& context, NodeId id, std::string_view name)
        : Node(context, id, ValueType::None, name)
    {
    }

    [[nodiscard]] std::string_view Symbol() const { return m_symbol.empty() ? Info().name : m_symbol; }
    [[nodiscard]] std::int64_t Value() const { return m_value; }

    /// @return  what the entry stands for as a float
    [[nodiscard]] double Number() const { return m_number.value_or(static_cast<double>(m_value)); }

    /// @return  whether the camera leaves the entry by itself after some time
    [[nodiscard]] bool IsSelfClearing() const { return m_isSelfClearing; }

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;

private:
    std::string_view m_symbol; // borrowed from the description
    std::int64_t m_value = 0;
    std::optional<double> m_number; // empty: the value
    bool m_hasValue = false;
    bool m_isSelfClearing = false;
};

} // namespace genapi
