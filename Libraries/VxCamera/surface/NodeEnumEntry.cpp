#include "VxCamera/surface/NodeEnumEntry.h"

#include <tuple>

#include "VxCamera/surface/NoThrow.h"

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
    auto mode = genapi::AccessMode::NotAvailable;
    std::ignore = NoThrow([&] {
        mode = m_map.Access(m_entry);
        return VxResult::Ok();
    });
    return genapi::IsAvailable(mode);
}

} // namespace surface
