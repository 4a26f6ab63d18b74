#include "VxCamera/surface/ListedString.h"

#include <utility>

ListedString::ListedString(ParameterFacts facts, std::function<VxString()> get)
    : ListedParameter(std::move(facts)), m_get(std::move(get))
{
}

VxResult ListedString::ToString(VxString& text) const
{
    text = m_get();
    return VxResult::Ok();
}

VxResult ListedString::FromString(const VxString&)
{
    return NotWritable();
}

VxResult ListedString::GetValue(VxString& value) const
{
    value = m_get();
    return VxResult::Ok();
}

VxResult ListedString::SetValue(const VxString&)
{
    return NotWritable();
}
