#pragma once

#include "BaseClasses/CCritSec.h"

/// Holds a CCritSec for one scope, unless another thread has it.
///
/// Owner:  the scope.
/// Thread: the one that made it.
class VxTryLock {
public:
    explicit VxTryLock(CCritSec& lock) : m_lock(lock), m_isHeld(lock.TryLock()) {}
    ~VxTryLock()
    {
        if (m_isHeld)
            m_lock.Unlock();
    }
    VxTryLock(const VxTryLock&) = delete;
    VxTryLock& operator=(const VxTryLock&) = delete;

    [[nodiscard]] bool IsHeld() const { return m_isHeld; }

private:
    CCritSec& m_lock; // borrowed: outlives the scope
    const bool m_isHeld;
};
