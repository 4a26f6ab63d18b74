#include "VxCamera/surface/NodeFloat.h"

namespace surface {

VxResult NodeFloat::GetValue(double& value) const
{
    return Store([&] { return Map().GetFloat(Node()); }, value);
}

VxResult NodeFloat::SetValue(double value)
{
    return NoThrow([&] { return Map().SetFloat(Node(), value); });
}

VxResult NodeFloat::GetMin(double& minimum) const
{
    genapi::FloatLimits limits;
    const VxResult result = Store([&] { return Map().GetFloatLimits(Node()); }, limits);
    if (result.IsOK())
        minimum = limits.minimum;
    return result;
}

VxResult NodeFloat::GetMax(double& maximum) const
{
    genapi::FloatLimits limits;
    const VxResult result = Store([&] { return Map().GetFloatLimits(Node()); }, limits);
    if (result.IsOK())
        maximum = limits.maximum;
    return result;
}

VxResult NodeFloat::GetUnit(VxString& unit) const
{
    return NoThrow([&] {
        unit = Unit();
        return VxResult::Ok();
    });
}

} // namespace surface
