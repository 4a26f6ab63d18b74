#pragma once

#include <cstddef>

/// How often this program has asked for memory, in whatever way: new, the C library's functions, OpenCV. What
/// the system's own modules take is not counted.
///
/// The program has to be linked with --wrap for each of the functions that MemoryRequests.cpp stands in for.
[[nodiscard]] std::size_t MemoryRequests();
