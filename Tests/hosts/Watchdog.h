#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

/// Ends the program when a call does not come back: a deadlock cannot be taken apart.
///
/// Owner:  the test.
/// Thread: Note on the test's; watches on one of its own.
class Watchdog final {
public:
    Watchdog() : m_thread([this] { Watch(); }) {}
    ~Watchdog()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// @param call  what begins now
    void Note(std::string call)
    {
        const std::lock_guard lock(m_mutex);
        m_call = std::move(call);
        m_began = Clock::now();
    }

private:
    using Clock = std::chrono::steady_clock;

    // Chosen: no call takes that long on a machine that still does anything at all.
    static constexpr std::chrono::seconds kLongestCall{120};

    void Watch()
    {
        std::unique_lock lock(m_mutex);
        while (!m_changed.wait_for(lock, std::chrono::seconds(1), [this] { return m_isOver; })) {
            if (Clock::now() - m_began < kLongestCall)
                continue;
            std::fprintf(stderr, "a call does not come back: %s\n", m_call.c_str());
            std::_Exit(EXIT_FAILURE);
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOver = false;                    // guarded by m_mutex
    std::string m_call = "none yet";          // guarded by m_mutex
    Clock::time_point m_began = Clock::now(); // guarded by m_mutex
    std::thread m_thread;                     // last: it uses the others
};
