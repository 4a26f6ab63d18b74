#pragma once

#include <windows.h>

namespace vxgrab {

/// A Win32 event for one scope.
///
/// Owner:  anybody, as a member.
/// Thread: any.
class Event final {
public:
    enum class Reset { Automatic, Manual };

    explicit Event(Reset reset) : m_handle(::CreateEventW(nullptr, reset == Reset::Manual, FALSE, nullptr)) {}
    ~Event()
    {
        if (m_handle != nullptr)
            ::CloseHandle(m_handle);
    }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void Set() { ::SetEvent(m_handle); }

    /// @return  the handle to wait for; null when the system had none left
    [[nodiscard]] HANDLE Handle() const { return m_handle; }

private:
    HANDLE m_handle;
};

} // namespace vxgrab
