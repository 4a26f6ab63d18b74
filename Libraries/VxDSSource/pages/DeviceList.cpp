#include "VxDSSource/pages/DeviceList.h"

#include "VxDSSource/camera/VxDeviceInfo.h"
#include "VxDSSource/camera/VxInterface.h"

#include <tuple>

namespace pages {

namespace {

// Fixed: the window stands still for so long each time the page shows its values.
constexpr std::uint32_t kSearchTimeMs = 250;

/// Whether a camera can be connected to at all.
bool IsUsable(const VxDeviceInfo& device)
{
    const VxDeviceInfoType type = device.GetType();
    return device.IsConfigurationValid() && (type == VxDeviceInfoType::Gev || type == VxDeviceInfoType::U3v);
}

} // namespace

void DeviceList::Fill(HWND list, const std::wstring& chosen)
{
    ::SendMessageW(list, CB_RESETCONTENT, 0, 0);
    m_system.SetDetectionTimeout(kSearchTimeMs);
    std::ignore = m_system.Find(); // a search that failed has found nothing
    for (std::size_t i = 0; i < m_system.GetInterfaceCount(); ++i) {
        const VxInterface* const network = m_system.GetInterface(i);
        for (std::size_t k = 0; network != nullptr && k < network->GetDeviceCount(); ++k) {
            const VxDeviceInfo* const device = network->GetDeviceInfo(k);
            if (device != nullptr && IsUsable(*device))
                Add(list, *device, chosen);
        }
    }
}

void DeviceList::Add(HWND list, const VxDeviceInfo& device, const std::wstring& chosen)
{
    const std::wstring id = device.GetConnectionID().Wide();
    const std::wstring text = device.GetModelName().Wide() + L" [" + id + L"]";
    const LRESULT entry = ::SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    if (entry < 0)
        return;
    ::SendMessageW(list, CB_SETITEMDATA, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(&device));
    if (id == chosen)
        ::SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(entry), 0);
}

std::optional<std::wstring> DeviceList::Chosen(HWND list)
{
    const LRESULT entry = ::SendMessageW(list, CB_GETCURSEL, 0, 0);
    if (entry < 0)
        return std::nullopt;
    const LRESULT data = ::SendMessageW(list, CB_GETITEMDATA, static_cast<WPARAM>(entry), 0);
    if (data == CB_ERR || data == 0)
        return std::nullopt;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): messages carry pointers as numbers
    return reinterpret_cast<const VxDeviceInfo*>(data)->GetConnectionID().Wide();
}

} // namespace pages
