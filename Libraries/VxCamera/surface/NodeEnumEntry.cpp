#include "VxCamera/surface/NodeEnumEntry.h"

namespace surface {

VxResult NodeEnumEntry::GetName(VxString& name) const
{
    name = VxString(m_map.EntryName(m_entry));
    return VxResult::Ok();
}

VxResult NodeEnumEntry::GetValue(std::int64_t& value) const
{
    value = m_map.EntryValue(m_entry);
    return VxResult::Ok();
}

bool NodeEnumEntry::IsAvailable() const
{
    return genapi::IsAvailable(m_map.Access(m_entry));
}

} // namespace surface
