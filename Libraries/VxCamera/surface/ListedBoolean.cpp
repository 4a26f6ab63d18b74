#include "VxCamera/surface/ListedBoolean.h"

#include <utility>

ListedBoolean::ListedBoolean(ParameterFacts facts, std::function<bool()> get, std::function<void(bool)> set)
    : ListedParameter(std::move(facts)), m_get(std::move(get)), m_set(std::move(set))
{
}

VxResult ListedBoolean::ToString(VxString& text) const
{
    text = m_get() ? "true" : "false";
    return VxResult::Ok();
}

VxResult ListedBoolean::FromString(const VxString& text)
{
    if (text == "true" || text == "1")
        return SetValue(true);
    if (text == "false" || text == "0")
        return SetValue(false);
    return NotA("truth value (true, false)", text);
}

VxResult ListedBoolean::GetValue(bool& value) const
{
    value = m_get();
    return VxResult::Ok();
}

VxResult ListedBoolean::SetValue(bool value)
{
    if (!m_set)
        return NotWritable();
    m_set(value);
    return VxResult::Ok();
}
