#include "VxCamera/genapi/node/CommandNode.h"

namespace genapi {

void CommandNode::Apply(const NodeProperty& property)
{
    switch (property.element) {
    case Element::CommandValue:
        m_command.SetNumber(IntegerOf(property));
        return;
    case Element::PCommandValue:
        m_command.SetNode(property.target);
        return;
    default:
        m_source.Apply(property, property.element == Element::Value ? IntegerOf(property) : std::nullopt);
    }
}

void CommandNode::Finish()
{
    if (m_source.IsEmpty())
        SetFault("it has neither a value nor a node to write to");
    if (m_command.IsEmpty())
        m_command.SetNumber(1); // what such descriptions leave out
}

AccessMode CommandNode::OwnAccess()
{
    const AccessMode mode = m_source.Access(*this);
    if (mode == AccessMode::NotImplemented)
        return mode;
    return IsWritable(mode) ? AccessMode::WriteOnly : AccessMode::NotAvailable;
}

VxResult CommandNode::Execute()
{
    const EvaluationScope scope(Context());
    if (!Fault().empty())
        return Error(VxError::InvalidData, Fault());
    const auto command = m_command.Get();
    if (!command)
        return command.Error();
    const VxResult result = m_source.Set(*this, Context(), *command);
    Context().Listener().Forget(*this); // the camera takes the number back when it is done
    return Verified(result);
}

VxExpected<bool> CommandNode::IsDone()
{
    const EvaluationScope scope(Context());
    if (!Fault().empty())
        return Error(VxError::InvalidData, Fault());
    Node* const target = m_source.Target(*this);
    if (target == nullptr || !IsReadable(target->Access()))
        return true;
    const auto command = m_command.Get();
    if (!command)
        return command.Error();
    Context().Listener().Forget(*this);
    const auto value = target->GetInteger();
    if (!value)
        return value.Error();
    return *value != *command;
}

} // namespace genapi
