#pragma once

#include "VxBase/VxResult.h"

#include <exception>
#include <new>
#include <utility>

/// Runs an operation of the surface and turns whatever it throws into a result: callers never see an
/// exception.
template <typename Operation>
[[nodiscard]] VxResult NoThrow(Operation&& operation) noexcept
{
    try {
        return std::forward<Operation>(operation)();
    } catch (const std::bad_alloc&) {
        return VxResult(VxError::OutOfMemory);
    } catch (const std::exception& fault) {
        try {
            return VxResult(VxError::Failed, fault.what());
        } catch (...) {
            return VxResult(VxError::Failed); // no memory for the text; without one none is needed
        }
    } catch (...) {
        return VxResult(VxError::Failed);
    }
}
