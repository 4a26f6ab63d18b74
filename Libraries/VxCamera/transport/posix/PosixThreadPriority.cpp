#include "VxCamera/transport/ThreadPriority.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace transport {

namespace {

// Chosen: before ordinary programs, behind what the system itself needs.
constexpr int kNiceness = -10;

/// Niceness is the thread's own on Linux.
class RaisedPriority final : public IRaisedPriority {
public:
    RaisedPriority(id_t thread, int before) : m_thread(thread), m_before(before) {}
    ~RaisedPriority() override { ::setpriority(PRIO_PROCESS, m_thread, m_before); }

private:
    const id_t m_thread;
    const int m_before;
};

} // namespace

std::unique_ptr<IRaisedPriority> RaiseThreadPriority()
{
    const auto thread = static_cast<id_t>(::syscall(SYS_gettid)); // ids are positive
    errno = 0;
    const int before = ::getpriority(PRIO_PROCESS, thread);
    if (errno != 0 || before <= kNiceness || ::setpriority(PRIO_PROCESS, thread, kNiceness) != 0)
        return nullptr;
    return std::make_unique<RaisedPriority>(thread, before);
}

} // namespace transport
