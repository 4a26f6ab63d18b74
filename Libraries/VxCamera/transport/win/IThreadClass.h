#pragma once

#include <windows.h>

namespace transport {

/// The system's class for threads that bring pictures and sound in: the real one, or what a test puts there.
///
/// Owner:  the raised priority.
/// Thread: the one that joins.
class IThreadClass {
public:
    IThreadClass(const IThreadClass&) = delete;
    IThreadClass& operator=(const IThreadClass&) = delete;
    virtual ~IThreadClass() = default;

    /// The calling thread joins: AvSetMmThreadCharacteristicsW.
    /// @return  null when there is no such class, or the system refuses
    virtual HANDLE Join(const wchar_t* task) = 0;
    virtual void Leave(HANDLE membership) = 0;

protected:
    IThreadClass() = default;
};

} // namespace transport
