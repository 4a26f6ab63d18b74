#include "VxCamera/genapi/node/StringNode.h"

namespace genapi {

void StringNode::Apply(const NodeProperty& property)
{
    if (property.element == Element::Value)
        m_value = property.text;
    else if (property.element == Element::PValue)
        m_target = property.target;
}

AccessMode StringNode::OwnAccess()
{
    return m_target != nullptr ? m_target->Access() : AccessMode::ReadWrite;
}

VxExpected<std::string> StringNode::DoGetString()
{
    if (m_target != nullptr)
        return m_target->GetString();
    return m_value;
}

VxResult StringNode::DoSetString(std::string_view value)
{
    if (m_target != nullptr)
        return m_target->SetString(value);
    m_value = value;
    Context().Listener().Changed(*this);
    return VxResult::Ok();
}

} // namespace genapi
