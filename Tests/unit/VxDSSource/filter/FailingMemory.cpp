#include "FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace failing_memory {

namespace {

constexpr int kNever = -1;
constexpr int kFailed = -2;

std::atomic<std::size_t> g_failingSize = 0;
std::atomic<long> g_live = 0;
thread_local int g_succeeding = kNever; // before the one that fails

void* Allocate(std::size_t bytes)
{
    if (g_succeeding == 0) {
        g_succeeding = kFailed;
        return nullptr;
    }
    if (g_succeeding > 0)
        --g_succeeding;
    void* const memory = std::malloc(bytes != 0 ? bytes : 1);
    if (memory != nullptr)
        ++g_live;
    return memory;
}

void Free(void* memory)
{
    if (memory != nullptr)
        --g_live;
    std::free(memory);
}

} // namespace

void FailSize(std::size_t bytes)
{
    g_failingSize = bytes;
}

long LiveAllocations()
{
    return g_live.load();
}

FailOnce::FailOnce(int succeeding)
{
    g_succeeding = succeeding;
}

FailOnce::~FailOnce()
{
    g_succeeding = kNever;
}

bool FailOnce::HasFailed() const
{
    return g_succeeding == kFailed;
}

} // namespace failing_memory

void* operator new(std::size_t bytes)
{
    void* const memory = failing_memory::Allocate(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return bytes == failing_memory::g_failingSize ? nullptr : failing_memory::Allocate(bytes);
}

void operator delete(void* memory) noexcept
{
    failing_memory::Free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    failing_memory::Free(memory);
}
