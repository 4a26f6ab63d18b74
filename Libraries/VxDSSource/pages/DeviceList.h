#pragma once

#include "VxDSSource/camera/VxSystem.h"

#include <windows.h>

#include <optional>
#include <string>

class VxDeviceInfo;

namespace pages {

/// Finds the cameras of this computer's networks and lists them in a combo box.
///
/// Owner:  ParametersPage, by value.
/// Thread: the window thread; a search holds it for up to 250 ms.
class DeviceList final {
public:
    /// Searches and fills the list with the cameras to which a connection is possible.
    /// @param chosen  connection ID of the entry to select, if it is found
    void Fill(HWND list, const std::wstring& chosen);

    /// @return  connection ID of the selected entry; nothing when none is
    [[nodiscard]] static std::optional<std::wstring> Chosen(HWND list);

private:
    static void Add(HWND list, const VxDeviceInfo& device, const std::wstring& chosen);

    VxSystem m_system; // lends what the list's entries point to, until the next search
};

} // namespace pages
