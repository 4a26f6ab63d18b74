#include "VxCamera/surface/NodeEnum.h"

#include <string>

namespace surface {

NodeEnum::NodeEnum(genapi::NodeMap& map, genapi::NodeId node, std::string_view category)
    : NodeParameterOf(map, node, category)
{
    for (const genapi::NodeId entry : map.Entries(node))
        m_entries.push_back(std::make_unique<NodeEnumEntry>(map, entry));
}

VxResult NodeEnum::GetEntriesCount(std::int64_t& count) const
{
    count = static_cast<std::int64_t>(m_entries.size()); // limited by the size of a description
    return VxResult::Ok();
}

VxResult NodeEnum::GetEntryByIndex(std::int64_t index, const VxGenEnumEntry** entry) const
{
    if (entry == nullptr)
        return VxResult(VxError::InvalidParameter, "there is no place for the entry");
    if (index < 0 || index >= static_cast<std::int64_t>(m_entries.size()))
        return VxResult(VxError::OutOfRange, GetName().Narrow() + ": there is no entry " +
                                                 std::to_string(index) + "; it has " +
                                                 std::to_string(m_entries.size()));
    *entry = m_entries[static_cast<std::size_t>(index)].get();
    return VxResult::Ok();
}

VxResult NodeEnum::GetValue(VxString& name) const
{
    return Store([&] { return Map().ToText(Node()); }, name);
}

VxResult NodeEnum::SetValue(const VxString& name)
{
    return NoThrow([&] { return Map().SetEntry(Node(), name.Narrow()); });
}

} // namespace surface
