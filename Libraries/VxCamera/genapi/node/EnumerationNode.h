#pragma once

#include "VxCamera/genapi/node/EnumEntryNode.h"
#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/node/ValueSource.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace genapi {

/// A choice among named numbers: kind "Enumeration". As an integer it is the number.
///
/// Owner and thread: see Node.
class EnumerationNode final : public Node {
public:
    EnumerationNode(NodeContext& context, NodeId id, std::string_view name)
        : Node(context, id, ValueType::Enumeration, name)
    {
    }

    /// Entries in the description's order.
    [[nodiscard]] std::span<EnumEntryNode* const> Entries() const { return m_entries; }

    /// @return  null when there is none of that name
    [[nodiscard]] EnumEntryNode* FindEntry(std::string_view symbol) const;

    /// @return  INVALID_DATA when the number in force belongs to no entry
    [[nodiscard]] VxExpected<EnumEntryNode*> Current();

    /// @return  INVALID_DATA for an unknown name, NOT_AVAILABLE for an entry that the camera does not offer
    /// now
    [[nodiscard]] VxResult Select(std::string_view symbol);

    [[nodiscard]] Node* FixedTarget() const override { return m_source.FixedTarget(); }
    [[nodiscard]] std::string_view NameOfNumber(std::int64_t value) const override;

protected:
    void Apply(const NodeProperty& property) override;
    void Finish() override;
    /// Nothing is available where no entry is.
    [[nodiscard]] AccessMode OwnAccess() override;
    [[nodiscard]] VxExpected<std::int64_t> DoGetInteger() override { return m_source.Get(*this); }
    [[nodiscard]] VxResult DoSetInteger(std::int64_t value) override;
    /// What the entry in force stands for; the number where it has no entry.
    [[nodiscard]] VxExpected<double> DoGetFloat() override;
    [[nodiscard]] VxResult DoSetFloat(double value) override;
    [[nodiscard]] VxExpected<IntegerLimits> DoGetIntegerLimits() override;

private:
    [[nodiscard]] EnumEntryNode* EntryOf(std::int64_t value) const;
    [[nodiscard]] VxResult Write(EnumEntryNode& entry);
    [[nodiscard]] std::string KnownNames() const;

    ValueSource<std::int64_t> m_source;
    std::vector<EnumEntryNode*> m_entries; // borrowed from the map
    std::optional<IntegerLimits> m_limits; // from the entries' numbers; made when they are asked for first
};

} // namespace genapi
