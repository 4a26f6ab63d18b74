#pragma once

#include <cstddef>

/// Decides which allocations of the test program fail. Stands in place of the language's own allocation
/// functions, so a program has one.
namespace failing_memory {

/// Allocations with std::nothrow of exactly this size fail, on any thread; 0: none does.
void FailSize(std::size_t bytes);

/// Allocations that live now, of all threads.
[[nodiscard]] long LiveAllocations();

/// One allocation of this thread fails while this object lives: the one after so many that succeed.
class FailOnce final {
public:
    explicit FailOnce(int succeeding);
    ~FailOnce();
    FailOnce(const FailOnce&) = delete;
    FailOnce& operator=(const FailOnce&) = delete;

    /// Whether there were enough allocations for one to fail.
    [[nodiscard]] bool HasFailed() const;
};

} // namespace failing_memory
