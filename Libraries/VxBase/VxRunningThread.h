#pragma once

#include <atomic>

/// A thread of this module that runs, counted for as long as this object lives.
///
/// A host may unload the module when it has no objects and no threads left: every thread that the module
/// starts has one of these as the first variable of its body.
///
/// Owner:  the thread's body, by value.
/// Thread: the one that is counted; Count may be called on any.
class VxRunningThread final {
public:
    VxRunningThread() { ++s_count; }
    ~VxRunningThread() { --s_count; }
    VxRunningThread(const VxRunningThread&) = delete;
    VxRunningThread& operator=(const VxRunningThread&) = delete;

    /// @return  threads of this module that run now
    [[nodiscard]] static long Count() { return s_count.load(); }

private:
    static inline std::atomic<long> s_count = 0;
};
