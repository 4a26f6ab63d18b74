#include "VxCamera/surface/ListedCommand.h"

#include <utility>

ListedCommand::ListedCommand(ParameterFacts facts, std::function<void()> execute)
    : ListedParameter(std::move(facts)), m_execute(std::move(execute))
{
}

VxResult ListedCommand::ToString(VxString& text) const
{
    text = "";
    return VxResult::Ok();
}

VxResult ListedCommand::FromString(const VxString&)
{
    return Execute();
}

VxResult ListedCommand::Execute()
{
    m_execute();
    return VxResult::Ok();
}

VxResult ListedCommand::IsDone(bool& isDone) const
{
    isDone = true;
    return VxResult::Ok();
}
