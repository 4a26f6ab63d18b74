#include "unit/VxCamera/pixel/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_count = 0;

} // namespace

std::size_t AllocationCount()
{
    return g_count;
}

void* operator new(std::size_t size)
{
    ++g_count;
    if (void* const memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    ++g_count;
    return std::malloc(size > 0 ? size : 1);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
