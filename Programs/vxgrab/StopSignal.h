#pragma once

#include "vxgrab/Event.h"

#include <windows.h>

namespace vxgrab {

/// Turns Ctrl-C, Ctrl-Break and the closing of the console window into an event, so that the program ends as
/// it does at any other time: graph stopped, film finished, summary printed.
///
/// Owner:  main, one at a time.
/// Thread: made and destroyed by the main thread; the system calls the handler on a thread of its own.
class StopSignal final {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    [[nodiscard]] HANDLE Handle() const { return m_wanted.Handle(); }
    [[nodiscard]] bool IsSet() const { return ::WaitForSingleObject(m_wanted.Handle(), 0) == WAIT_OBJECT_0; }

private:
    static BOOL WINAPI OnControl(DWORD control);

    Event m_wanted{Event::Reset::Manual};
    Event m_ended{Event::Reset::Manual};
};

} // namespace vxgrab
