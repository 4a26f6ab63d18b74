#include "VxCamera/surface/NodeFloat.h"

namespace surface {

VxResult NodeFloat::GetValue(double& value) const
{
    return Store(Map().GetFloat(Node()), value);
}

VxResult NodeFloat::SetValue(double value)
{
    return Map().SetFloat(Node(), value);
}

VxResult NodeFloat::GetMin(double& minimum) const
{
    const auto limits = Map().GetFloatLimits(Node());
    if (limits)
        minimum = limits->minimum;
    return limits.Result();
}

VxResult NodeFloat::GetMax(double& maximum) const
{
    const auto limits = Map().GetFloatLimits(Node());
    if (limits)
        maximum = limits->maximum;
    return limits.Result();
}

} // namespace surface
