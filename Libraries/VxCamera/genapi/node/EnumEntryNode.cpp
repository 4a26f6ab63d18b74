#include "VxCamera/genapi/node/EnumEntryNode.h"

#include "VxCamera/genapi/node/NodeWords.h"

namespace genapi {

void EnumEntryNode::Apply(const NodeProperty& property)
{
    switch (property.element) {
    case Element::Value:
        m_value = IntegerOf(property).value_or(0);
        m_hasValue = true;
        return;
    case Element::NumericValue:
        m_number = FloatOf(property);
        return;
    case Element::Symbolic:
        m_symbol = property.text;
        return;
    case Element::IsSelfClearing:
        m_isSelfClearing = ParseYesNo(property.text).value_or(false);
        return;
    default:
        return;
    }
}

void EnumEntryNode::Finish()
{
    if (!m_hasValue)
        SetFault("it has no Value");
}

} // namespace genapi
