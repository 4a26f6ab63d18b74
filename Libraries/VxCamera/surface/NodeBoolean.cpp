#include "VxCamera/surface/NodeBoolean.h"

namespace surface {

VxResult NodeBoolean::GetValue(bool& value) const
{
    return Store([&] { return Map().GetBoolean(Node()); }, value);
}

VxResult NodeBoolean::SetValue(bool value)
{
    return NoThrow([&] { return Map().SetBoolean(Node(), value); });
}

} // namespace surface
