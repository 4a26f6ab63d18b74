#include "VxCamera/surface/NodeInteger.h"

namespace surface {

VxResult NodeInteger::GetValue(std::int64_t& value) const
{
    return Store(Map().GetInteger(Node()), value);
}

VxResult NodeInteger::SetValue(std::int64_t value)
{
    return Map().SetInteger(Node(), value);
}

VxResult NodeInteger::GetMin(std::int64_t& minimum) const
{
    const auto limits = Map().GetIntegerLimits(Node());
    if (limits)
        minimum = limits->minimum;
    return limits.Result();
}

VxResult NodeInteger::GetMax(std::int64_t& maximum) const
{
    const auto limits = Map().GetIntegerLimits(Node());
    if (limits)
        maximum = limits->maximum;
    return limits.Result();
}

VxResult NodeInteger::GetIncrement(std::int64_t& increment) const
{
    const auto limits = Map().GetIntegerLimits(Node());
    if (limits)
        increment = limits->increment;
    return limits.Result();
}

} // namespace surface
