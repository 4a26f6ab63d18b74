#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// How long a test waits for something that must happen. Chosen: far above what a loaded machine needs; only
/// a failing test ever waits that long.
inline constexpr std::chrono::seconds kPatience{30};

/// Counts up; threads wait for a count.
///
/// Owner:  the test.
/// Thread: any.
class Gate final {
public:
    void Pass()
    {
        const std::lock_guard lock(m_mutex);
        ++m_count;
        m_changed.notify_all();
    }

    /// @return  whether the count was reached in time
    [[nodiscard]] bool WaitFor(int count = 1)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kPatience, [&] { return m_count >= count; });
    }

    [[nodiscard]] int Count()
    {
        const std::lock_guard lock(m_mutex);
        return m_count;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};
