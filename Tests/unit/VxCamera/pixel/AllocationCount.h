#pragma once

#include <cstddef>

/// @return  how often this program has taken memory with new
[[nodiscard]] std::size_t AllocationCount();
