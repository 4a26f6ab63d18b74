#include "VxCamera/surface/NodeString.h"

namespace surface {

VxResult NodeString::GetValue(VxString& value) const
{
    return Store(Map().GetString(Node()), value);
}

VxResult NodeString::SetValue(const VxString& value)
{
    return Map().SetString(Node(), value.Narrow());
}

} // namespace surface
