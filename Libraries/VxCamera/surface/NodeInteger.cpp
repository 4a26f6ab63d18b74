#include "VxCamera/surface/NodeInteger.h"

namespace surface {

VxResult NodeInteger::GetValue(std::int64_t& value) const
{
    return Store([&] { return Map().GetInteger(Node()); }, value);
}

VxResult NodeInteger::SetValue(std::int64_t value)
{
    return NoThrow([&] { return Map().SetInteger(Node(), value); });
}

VxResult NodeInteger::GetMin(std::int64_t& minimum) const
{
    genapi::IntegerLimits limits;
    const VxResult result = Store([&] { return Map().GetIntegerLimits(Node()); }, limits);
    if (result.IsOK())
        minimum = limits.minimum;
    return result;
}

VxResult NodeInteger::GetMax(std::int64_t& maximum) const
{
    genapi::IntegerLimits limits;
    const VxResult result = Store([&] { return Map().GetIntegerLimits(Node()); }, limits);
    if (result.IsOK())
        maximum = limits.maximum;
    return result;
}

VxResult NodeInteger::GetIncrement(std::int64_t& increment) const
{
    genapi::IntegerLimits limits;
    const VxResult result = Store([&] { return Map().GetIntegerLimits(Node()); }, limits);
    if (result.IsOK())
        increment = limits.increment;
    return result;
}

VxResult NodeInteger::GetUnit(VxString& unit) const
{
    return NoThrow([&] {
        unit = Unit();
        return VxResult::Ok();
    });
}

} // namespace surface
