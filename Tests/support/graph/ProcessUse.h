#pragma once

#include <cstddef>
#include <map>
#include <string>

/// What this process holds of the system.
struct ProcessUse {
    std::size_t handles = 0;
    std::size_t threads = 0;
    std::size_t udpSockets = 0; ///< of the whole network namespace: this system does not tell whose they are
    std::map<unsigned, std::size_t> handlesByType; ///< by the system's own numbers; for messages only
};

/// Counts now. The counting itself leaves nothing behind.
[[nodiscard]] ProcessUse MeasureProcess();

/// Counts again and again until nothing exceeds the limit, or the time is over: the system takes back what a
/// thread held a moment after the thread has ended.
/// @return  the last count
[[nodiscard]] ProcessUse MeasureProcessUntilWithin(const ProcessUse& limit);

/// @return  whether nothing exceeds the limit
[[nodiscard]] bool IsWithin(const ProcessUse& use, const ProcessUse& limit);

/// @return  the counts in words
[[nodiscard]] std::string Describe(const ProcessUse& use);
