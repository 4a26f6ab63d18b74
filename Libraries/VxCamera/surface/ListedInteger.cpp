#include "VxCamera/surface/ListedInteger.h"

#include <charconv>
#include <string>
#include <utility>

ListedInteger::ListedInteger(ParameterFacts facts, Access access)
    : ListedParameter(std::move(facts)), m_access(std::move(access))
{
}

VxResult ListedInteger::ToString(VxString& text) const
{
    text = std::to_string(m_access.get());
    return VxResult::Ok();
}

VxResult ListedInteger::FromString(const VxString& text)
{
    const std::string& digits = text.Narrow();
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size())
        return NotA("whole number", text);
    return SetValue(value);
}

VxResult ListedInteger::GetValue(std::int64_t& value) const
{
    value = m_access.get();
    return VxResult::Ok();
}

VxResult ListedInteger::SetValue(std::int64_t value)
{
    if (!IsWritable())
        return NotWritable();
    if (value < m_access.minimum || value > m_access.maximum)
        return OutOfRange(std::to_string(m_access.minimum) + " to " + std::to_string(m_access.maximum));
    return m_access.set(value);
}

VxResult ListedInteger::GetMin(std::int64_t& minimum) const
{
    minimum = m_access.minimum;
    return VxResult::Ok();
}

VxResult ListedInteger::GetMax(std::int64_t& maximum) const
{
    maximum = m_access.maximum;
    return VxResult::Ok();
}

VxResult ListedInteger::GetIncrement(std::int64_t& increment) const
{
    increment = 1;
    return VxResult::Ok();
}
