#pragma once

#include <windows.h>

#include <new>
#include <utility>

/// Runs a function and turns any exception into a failure code: nothing is thrown out of a COM method or a
/// thread.
/// @param failure  code for an exception that is not std::bad_alloc, where E_UNEXPECTED means something else
/// @return  what the function returns; E_OUTOFMEMORY for std::bad_alloc, failure for every other exception
template <typename Function>
[[nodiscard]] HRESULT AtComEdge(Function&& function, HRESULT failure = E_UNEXPECTED) noexcept
{
    try {
        return std::forward<Function>(function)();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return failure;
    }
}
