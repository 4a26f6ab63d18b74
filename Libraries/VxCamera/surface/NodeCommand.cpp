#include "VxCamera/surface/NodeCommand.h"

namespace surface {

VxResult NodeCommand::Execute()
{
    return NoThrow([&] { return Map().Execute(Node()); });
}

VxResult NodeCommand::IsDone(bool& isDone) const
{
    return Store([&] { return Map().IsDone(Node()); }, isDone);
}

} // namespace surface
