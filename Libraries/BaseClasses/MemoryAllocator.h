#pragma once

#include <windows.h>

#include <strmif.h>

/// Creates the platform's memory allocator.
STDAPI CreateMemoryAllocator(IMemAllocator** allocator);
