#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

/// What this process holds of the system.
struct ProcessUse {
    std::map<unsigned, std::size_t> handlesByType; ///< by the system's own numbers of the types
    std::size_t threads = 0;
    std::size_t udpSockets = 0; ///< of the whole network namespace: this system does not tell whose they are

    /// Makes a limit of it that is wider by some events. Locks are why one may be needed: the run-time
    /// library gives a mutex its event when two threads first meet there, and keeps it as long as the mutex
    /// lives.
    void AllowEvents(std::size_t count);

    [[nodiscard]] bool operator==(const ProcessUse& other) const = default;
};

/// Counts now. The counting itself leaves nothing behind.
[[nodiscard]] ProcessUse MeasureProcess();

/// Counts again and again until the count stays the same for a while: the system takes back what a thread
/// held a moment after the thread has ended, and what is counted too much would hide a loss.
[[nodiscard]] ProcessUse MeasureProcessAtRest();

/// Counts again and again until nothing exceeds the limit, or the time is over: the system takes back what a
/// thread held a moment after the thread has ended.
/// @param patience  chosen: far above what a loaded machine needs
/// @return  the last count
[[nodiscard]] ProcessUse
MeasureProcessUntilWithin(const ProcessUse& limit,
                          std::chrono::milliseconds patience = std::chrono::seconds(5));

/// @return  whether nothing exceeds the limit: no type of handle, not the threads, not the sockets
[[nodiscard]] bool IsWithin(const ProcessUse& use, const ProcessUse& limit);

/// What this process has allocated on its heaps, whoever holds it.
struct HeapUse {
    std::size_t blocks = 0;
    std::size_t bytes = 0;
};

/// Counts now.
[[nodiscard]] HeapUse MeasureHeaps();

/// @return  the counts in words
[[nodiscard]] std::string Describe(const ProcessUse& use);
