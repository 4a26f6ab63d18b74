#pragma once

#include "VxCamera/surface/NodeParameterOf.h"
#include "VxDSSource/camera/VxGenCommand.h"

namespace surface {

/// A command over a node map.
///
/// Owner and thread: see NodeParameterOf.
class NodeCommand final : public NodeParameterOf<VxGenCommand> {
public:
    using NodeParameterOf::NodeParameterOf;

    VxResult Execute() override;
    VxResult IsDone(bool& isDone) const override;
};

} // namespace surface
