#pragma once

#include "VxCamera/surface/NodeParameterOf.h"
#include "VxDSSource/camera/VxGenString.h"

namespace surface {

/// A text feature over a node map.
///
/// Owner and thread: see NodeParameterOf.
class NodeString final : public NodeParameterOf<VxGenString> {
public:
    using NodeParameterOf::NodeParameterOf;

    VxResult GetValue(VxString& value) const override;
    VxResult SetValue(const VxString& value) override;
};

} // namespace surface
