#pragma once

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

/// How far threads go behind others on Linux, where each has a niceness of its own: -20 (first) to 19.
namespace niceness {

inline id_t CallingThread()
{
    return static_cast<id_t>(::syscall(SYS_gettid)); // ids are positive
}

inline int Of(id_t thread)
{
    return ::getpriority(PRIO_PROCESS, thread);
}

inline int OfThread()
{
    return Of(CallingThread());
}

/// @return  whether the calling thread has it now
inline bool Be(int value)
{
    return ::setpriority(PRIO_PROCESS, CallingThread(), value) == 0;
}

/// The calling thread goes behind ordinary ones: everybody may.
inline bool BeBehind()
{
    constexpr int kBehind = 5;
    return Be(std::max(OfThread(), kBehind));
}

/// Whether this process may give its threads that niceness.
inline bool MayBe(int value)
{
    bool isPermitted = false;
    std::thread([&] { isPermitted = BeBehind() && Be(value); }).join();
    return isPermitted;
}

} // namespace niceness
