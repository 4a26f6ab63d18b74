#pragma once

#include "VxCamera/surface/NodeParameterOf.h"
#include "VxDSSource/camera/VxGenRegister.h"

namespace surface {

/// A block of bytes over a node map.
///
/// Owner and thread: see NodeParameterOf.
class NodeRegister final : public NodeParameterOf<VxGenRegister> {
public:
    using NodeParameterOf::NodeParameterOf;

    VxResult GetValue(std::vector<std::byte>& bytes) const override;
    VxResult SetValue(std::span<const std::byte> bytes) override;
};

} // namespace surface
