#include "VxCamera/surface/ListedFloat.h"

#include <array>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>

ListedFloat::ListedFloat(ParameterFacts facts, std::function<double()> get)
    : ListedParameter(std::move(facts)), m_get(std::move(get))
{
}

VxResult ListedFloat::ToString(VxString& text) const
{
    std::array<char, 32> digits{}; // the shortest form of a double has at most 24 characters
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), m_get());
    if (error != std::errc())
        return VxResult(VxError::Failed);
    text = std::string_view(digits.data(), end);
    return VxResult::Ok();
}

VxResult ListedFloat::FromString(const VxString&)
{
    return NotWritable();
}

VxResult ListedFloat::GetValue(double& value) const
{
    value = m_get();
    return VxResult::Ok();
}

VxResult ListedFloat::SetValue(double)
{
    return NotWritable();
}

VxResult ListedFloat::GetMin(double& minimum) const
{
    minimum = 0.0;
    return VxResult::Ok();
}

VxResult ListedFloat::GetMax(double& maximum) const
{
    maximum = std::numeric_limits<double>::max();
    return VxResult::Ok();
}
