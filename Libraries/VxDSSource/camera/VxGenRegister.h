#pragma once

#include "VxDSSource/camera/VxGenParameter.h"

#include <cstddef>
#include <span>
#include <vector>

/// A feature that is a block of bytes.
///
/// Owner and thread: see VxGenParameter.
class VxGenRegister : public VxGenParameter {
public:
    /// @param[out] bytes  the whole register; untouched on failure
    virtual VxResult GetValue(std::vector<std::byte>& bytes) const = 0;

    /// @param bytes  exactly as many as the register has
    virtual VxResult SetValue(std::span<const std::byte> bytes) = 0;
};
