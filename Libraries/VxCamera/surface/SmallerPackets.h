#pragma once

#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"

#include <condition_variable>
#include <functional>
#include <thread>

/// Makes a camera send smaller packets when somebody who must not wait for the camera asks for it.
///
/// Owner:  shared between the device, which ends it, and the stream's receiver, which asks.
/// Thread: Ask from any thread, and returns at once; Start and End from one at a time. Runs a thread of its
/// own, which waits until it is asked or ended.
class SmallerPackets {
public:
    /// @param stepDown  talks to the camera; called on this object's thread
    explicit SmallerPackets(std::function<void()> stepDown);
    ~SmallerPackets();
    SmallerPackets(const SmallerPackets&) = delete;
    SmallerPackets& operator=(const SmallerPackets&) = delete;

    /// @return  OUT_OF_MEMORY when the system has no thread left
    VxResult Start();

    void Ask();

    /// From now on nothing is done any more. A command that is under way ends with its answer or time-out.
    void End();

private:
    void Run();

    const std::function<void()> m_stepDown;
    VxMutex m_mutex;
    std::condition_variable_any m_changed;
    bool m_isAsked VX_GUARDED_BY(m_mutex) = false;
    bool m_isEnding VX_GUARDED_BY(m_mutex) = false;
    std::thread m_thread; // uses all of the above
};
