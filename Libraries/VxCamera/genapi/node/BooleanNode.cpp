#include "VxCamera/genapi/node/BooleanNode.h"

#include "VxCamera/genapi/node/NodeWords.h"

namespace genapi {

void BooleanNode::Apply(const NodeProperty& property)
{
    switch (property.element) {
    case Element::OnValue:
        m_on = IntegerOf(property).value_or(m_on);
        return;
    case Element::OffValue:
        m_off = IntegerOf(property).value_or(m_off);
        return;
    case Element::Value:
        m_initial = ParseYesNo(property.text);
        if (!m_initial)
            SetFault("its Value \"" + std::string(property.text) + "\" is neither true nor false");
        m_source.Apply(property, 0);
        return;
    default:
        m_source.Apply(property, std::nullopt);
    }
}

void BooleanNode::Finish()
{
    if (m_source.IsEmpty())
        SetFault("it has neither a value nor a node that gives one");
    if (m_initial)
        m_source.Apply({.element = Element::Value}, *m_initial ? m_on : m_off);
}

VxExpected<std::int64_t> BooleanNode::DoGetInteger()
{
    const auto value = m_source.Get(*this);
    if (!value)
        return value.Error();
    return std::int64_t{*value == m_on ? 1 : 0};
}

VxResult BooleanNode::DoSetInteger(std::int64_t value)
{
    return m_source.Set(*this, Context(), value != 0 ? m_on : m_off);
}

VxExpected<IntegerLimits> BooleanNode::DoGetIntegerLimits()
{
    return IntegerLimits{.minimum = 0, .maximum = 1, .increment = 1};
}

} // namespace genapi
