#include "MemoryRequests.h"

#include <atomic>

namespace {

std::atomic<std::size_t> g_requests = 0;

} // namespace

std::size_t MemoryRequests()
{
    return g_requests.load();
}

// Names fixed by the linker: with --wrap=NAME calls of NAME go to __wrap_NAME, and __real_NAME is what NAME
// was.
extern "C" {

void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __real_realloc(void* block, std::size_t bytes);

// Called through the pointer to the system's function, in whose place another pointer is put.
using AlignedMalloc = void* (*)(std::size_t bytes, std::size_t alignment);
extern AlignedMalloc __real___imp__aligned_malloc;

void* CountedAlignedMalloc(std::size_t bytes, std::size_t alignment)
{
    ++g_requests;
    return __real___imp__aligned_malloc(bytes, alignment);
}

extern const AlignedMalloc __wrap___imp__aligned_malloc;
const AlignedMalloc __wrap___imp__aligned_malloc = &CountedAlignedMalloc;

void* __wrap_malloc(std::size_t bytes)
{
    ++g_requests;
    return __real_malloc(bytes);
}

void* __wrap_calloc(std::size_t count, std::size_t bytes)
{
    ++g_requests;
    return __real_calloc(count, bytes);
}

void* __wrap_realloc(void* block, std::size_t bytes)
{
    ++g_requests;
    return __real_realloc(block, bytes);
}
}
