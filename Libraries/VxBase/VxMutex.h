#pragma once

#include <mutex>

// Thread-safety annotations: checked by clang, documentation for every other compiler.
#if defined(__clang__)
#define VX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VX_THREAD_ANNOTATION(x)
#endif
#define VX_GUARDED_BY(mutex) VX_THREAD_ANNOTATION(guarded_by(mutex))
#define VX_REQUIRES(mutex) VX_THREAD_ANNOTATION(requires_capability(mutex))
#define VX_EXCLUDES(mutex) VX_THREAD_ANNOTATION(locks_excluded(mutex))

/// std::mutex with annotations. Satisfies Lockable, so std::unique_lock and std::condition_variable_any take
/// it.
class VX_THREAD_ANNOTATION(capability("mutex")) VxMutex {
public:
    VxMutex() = default;
    VxMutex(const VxMutex&) = delete;
    VxMutex& operator=(const VxMutex&) = delete;

    void lock() VX_THREAD_ANNOTATION(acquire_capability()) { m_mutex.lock(); }
    void unlock() VX_THREAD_ANNOTATION(release_capability()) { m_mutex.unlock(); }
    bool try_lock() VX_THREAD_ANNOTATION(try_acquire_capability(true)) { return m_mutex.try_lock(); }

private:
    std::mutex m_mutex;
};

/// Holds a VxMutex for one scope.
class VX_THREAD_ANNOTATION(scoped_lockable) VxLock final {
public:
    explicit VxLock(VxMutex& mutex) VX_THREAD_ANNOTATION(acquire_capability(mutex)) : m_mutex(mutex)
    {
        m_mutex.lock();
    }
    ~VxLock() VX_THREAD_ANNOTATION(release_capability()) { m_mutex.unlock(); }
    VxLock(const VxLock&) = delete;
    VxLock& operator=(const VxLock&) = delete;

private:
    VxMutex& m_mutex; // borrowed: outlives the scope
};
