#pragma once

#include "BaseClasses/CCritSec.h"

/// Holds a CCritSec for one scope.
///
/// Owner:  the scope.
/// Thread: the one that made it.
class CAutoLock {
public:
    explicit CAutoLock(CCritSec* lock) : m_pLock(lock) { m_pLock->Lock(); }
    ~CAutoLock() { m_pLock->Unlock(); }
    CAutoLock(const CAutoLock&) = delete;
    CAutoLock& operator=(const CAutoLock&) = delete;

protected:
    CCritSec* m_pLock; // borrowed: outlives the scope
};
