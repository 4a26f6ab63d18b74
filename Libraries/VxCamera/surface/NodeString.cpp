#include "VxCamera/surface/NodeString.h"

namespace surface {

VxResult NodeString::GetValue(VxString& value) const
{
    return Store([&] { return Map().GetString(Node()); }, value);
}

VxResult NodeString::SetValue(const VxString& value)
{
    return NoThrow([&] { return Map().SetString(Node(), value.Narrow()); });
}

} // namespace surface
