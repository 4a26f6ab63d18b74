#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

/// Counts down once and lets everybody go who waits for the end.
///
/// std::latch would do, but tests that waited for one hung in programs of the mingw-w64 tool chain (GCC 12,
/// under Wine).
///
/// Owner:  the test.
/// Thread: any.
class Latch {
public:
    explicit Latch(std::ptrdiff_t count) : m_count(count) {}

    void count_down()
    {
        const std::lock_guard lock(m_mutex);
        if (--m_count == 0)
            m_ended.notify_all();
    }

    void wait()
    {
        std::unique_lock lock(m_mutex);
        m_ended.wait(lock, [this] { return m_count <= 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::ptrdiff_t m_count;
};
