#include "VxCamera/surface/NodeCommand.h"

namespace surface {

VxResult NodeCommand::Execute()
{
    return Map().Execute(Node());
}

VxResult NodeCommand::IsDone(bool& isDone) const
{
    return Store(Map().IsDone(Node()), isDone);
}

} // namespace surface
