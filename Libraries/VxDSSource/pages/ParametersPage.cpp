#include "VxDSSource/pages/ParametersPage.h"

#include "VxDSSource/filter/SettingsTable.h"
#include "VxDSSource/pages/DialogItems.h"
#include "VxDSSource/pages/FocusFrame.h"
#include "VxDSSource/pages/ResourceIds.h"

#include <algorithm>
#include <array>

using namespace pages;

namespace {

// Fixed: what is read of an edit control at most.
constexpr std::size_t kLongestText = 256;

// Entries of the lists that never change.
constexpr std::size_t kOutputTypes = 2; // "RGB", "YUV"
constexpr std::size_t kKernelSizes = 3; // "0", "3", "5"
constexpr std::size_t kZoomSteps = 10;  // "0" to "9"

/// A number and the control that shows it.
struct NumberControl {
    int id;
    std::int32_t ParameterValues::*value;
};

constexpr std::array<NumberControl, 10> kNumbers = {{
    {IDC_UNICAST_PORT, &ParameterValues::unicastPort},
    {IDC_MULTICAST_PORT, &ParameterValues::multicastPort},
    {IDC_STREAM_CHANNEL, &ParameterValues::channel},
    {IDC_BUFFER_COUNT, &ParameterValues::bufferCount},
    {IDC_DEFAULT_BUFFER_SIZE, &ParameterValues::defaultBufferBytes},
    {IDC_DROP_THRESHOLD, &ParameterValues::dropThreshold},
    {IDC_DEVICE_WIDTH, &ParameterValues::deviceWidthPx},
    {IDC_DEVICE_HEIGHT, &ParameterValues::deviceHeightPx},
    {IDC_OUTPUT_WIDTH, &ParameterValues::outputWidthPx},
    {IDC_OUTPUT_HEIGHT, &ParameterValues::outputHeightPx},
}};

/// @return  the entry whose index is the value; nothing for a value outside the list
std::optional<std::size_t> EntryAt(std::int32_t value, std::size_t count)
{
    if (value < 0 || static_cast<std::size_t>(value) >= count)
        return std::nullopt;
    return static_cast<std::size_t>(value);
}

} // namespace

ParametersPage::ParametersPage(LPUNKNOWN outer) : SourcePage(outer, IDD_PARAMETERS_PAGE, IDS_PARAMETERS_TITLE)
{
}

HRESULT ParametersPage::OnConnect(IUnknown* object)
{
    const HRESULT result = SourcePage::OnConnect(object);
    if (FAILED(result))
        return result;
    if (!m_source)
        return E_FAIL; // an object that says yes and gives nothing
    LoadValues();
    return S_OK;
}

HRESULT ParametersPage::OnActivate()
{
    DrawFocusAround(Item(IDC_DIAGNOSTICS)); // its caption stands before it
    ShowValues(); // the controls tell of each change: not active yet, this is no edit of the user's
    m_isActive = true;
    return S_OK;
}

HRESULT ParametersPage::OnDeactivate()
{
    SourcePage::OnDeactivate();
    ReadControls(); // what was not applied is there again when the page comes back
    return S_OK;
}

HRESULT ParametersPage::OnApplyChanges()
{
    ReadControls();
    if (!m_source)
        return E_POINTER;
    m_values.Store(*m_source.Get());
    const HCURSOR before = ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT));
    m_source->Connect(); // what came of it shows in the values, and in the picture
    ::SetCursor(before);
    LoadValues();
    ShowValues();
    return S_OK;
}

INT_PTR ParametersPage::OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != WM_COMMAND)
        return SourcePage::OnReceiveMessage(window, message, wParam, lParam);
    if (m_isActive)
        OnCommand(LOWORD(wParam), HIWORD(wParam));
    return TRUE;
}

void ParametersPage::OnCommand(int control, int notification)
{
    MarkDirty();
    if (notification != 0) // a change of text or selection; 0 is a click or a key
        return;
    EnableControls();
    if ((control != IDC_USE_CURRENT && control != IDC_CLEAR) || !m_source)
        return;
    if (control == IDC_USE_CURRENT)
        m_source->SaveDefault();
    else
        m_source->ClearDefault();
    LoadValues();
    ShowValues();
}

void ParametersPage::LoadValues()
{
    if (m_source)
        m_values.Load(*m_source.Get());
}

void ParametersPage::ShowValues()
{
    if (m_hwnd == nullptr) // Apply works without a window, too
        return;
    ShowNumbers();
    ::SetDlgItemTextW(m_hwnd, IDC_MULTICAST_ADDRESS, m_values.multicastAddress.c_str());
    ::SetDlgItemTextW(m_hwnd, IDC_DEFAULT_SUMMARY, m_values.defaultSummary.c_str());
    int role = IDC_ROLE_CONTROLLER; // for every number that is no role, too
    if (m_values.role == static_cast<std::int32_t>(vxds::kRoleUnicast))
        role = IDC_ROLE_UNICAST;
    else if (m_values.role == static_cast<std::int32_t>(vxds::kRoleMulticast))
        role = IDC_ROLE_MULTICAST;
    ::CheckRadioButton(m_hwnd, IDC_ROLE_CONTROLLER, IDC_ROLE_MULTICAST, role);
    ::CheckDlgButton(m_hwnd, IDC_DIAGNOSTICS, m_values.isDiagnosticsEnabled ? BST_CHECKED : BST_UNCHECKED);
    ShowLists();
    EnableControls();
}

void ParametersPage::ShowNumbers()
{
    for (const NumberControl& number : kNumbers)
        ::SetDlgItemTextW(m_hwnd, number.id, std::to_wstring(m_values.*number.value).c_str());
}

void ParametersPage::ShowLists()
{
    m_devices.Fill(Item(IDC_DEVICE), m_values.deviceId);

    const auto& sources = m_values.sources;
    const auto source = std::ranges::find(sources, m_values.source);
    std::optional<std::size_t> selected;
    if (source != sources.end())
        selected = static_cast<std::size_t>(source - sources.begin());
    FillList(Item(IDC_SOURCE), sources, selected);

    FillList(Item(IDC_OUTPUT_TYPE), {L"RGB", L"YUV"}, EntryAt(m_values.outputPixelType, kOutputTypes));
    FillList(Item(IDC_KERNEL_SIZE), {L"0", L"3", L"5"}, KernelEntryOf(m_values.kernelSize));

    std::vector<std::wstring> steps;
    for (std::size_t step = 0; step < kZoomSteps; ++step)
        steps.push_back(std::to_wstring(step));
    FillList(Item(IDC_ZOOM), steps, EntryAt(m_values.zoom, kZoomSteps));
}

void ParametersPage::EnableControls()
{
    const bool isUnicast = ::IsDlgButtonChecked(m_hwnd, IDC_ROLE_UNICAST) == BST_CHECKED;
    const bool isMulticast = ::IsDlgButtonChecked(m_hwnd, IDC_ROLE_MULTICAST) == BST_CHECKED;
    const auto enable = [this](int id, bool isEnabled) {
        ::EnableWindow(Item(id), isEnabled ? TRUE : FALSE);
    };
    enable(IDC_UNICAST_PORT, isUnicast);
    enable(IDC_MULTICAST_ADDRESS, isMulticast);
    enable(IDC_MULTICAST_PORT, isMulticast);
    enable(IDC_STREAM_CHANNEL, isUnicast || isMulticast);
    enable(IDC_DEVICE_WIDTH, false);
    enable(IDC_DEVICE_HEIGHT, false);
    // In every role: a receiver's camera may have been controlled before, so there may be sources to choose
    // from.
    enable(IDC_SOURCE, ::SendMessageW(Item(IDC_SOURCE), CB_GETCOUNT, 0, 0) > 0);
}

void ParametersPage::ReadControls()
{
    if (m_hwnd == nullptr)
        return; // read when the page was left
    ReadNumbers();
    m_values.multicastAddress = ItemText(Item(IDC_MULTICAST_ADDRESS), kLongestText);
    m_values.role = static_cast<std::int32_t>(vxds::kRoleController);
    if (::IsDlgButtonChecked(m_hwnd, IDC_ROLE_UNICAST) == BST_CHECKED)
        m_values.role = static_cast<std::int32_t>(vxds::kRoleUnicast);
    else if (::IsDlgButtonChecked(m_hwnd, IDC_ROLE_MULTICAST) == BST_CHECKED)
        m_values.role = static_cast<std::int32_t>(vxds::kRoleMulticast);
    m_values.isDiagnosticsEnabled = ::IsDlgButtonChecked(m_hwnd, IDC_DIAGNOSTICS) == BST_CHECKED;
    ReadLists();
}

void ParametersPage::ReadNumbers()
{
    for (const NumberControl& number : kNumbers) {
        std::int32_t& value = m_values.*number.value;
        value = NumberIn(ItemText(Item(number.id), kLongestText), value);
    }
}

void ParametersPage::ReadLists()
{
    // What is not selected keeps its value: a camera that is switched off, a number that the list does not
    // have.
    if (const auto device = DeviceList::Chosen(Item(IDC_DEVICE)))
        m_values.deviceId = *device;
    if (const auto source = SelectedEntry(Item(IDC_SOURCE), m_values.sources.size()))
        m_values.source = m_values.sources[*source];
    if (const auto type = SelectedEntry(Item(IDC_OUTPUT_TYPE), kOutputTypes))
        m_values.outputPixelType = static_cast<std::int32_t>(*type);
    if (const auto kernel = SelectedEntry(Item(IDC_KERNEL_SIZE), kKernelSizes))
        m_values.kernelSize = KernelSizeOf(*kernel);
    if (const auto zoom = SelectedEntry(Item(IDC_ZOOM), kZoomSteps))
        m_values.zoom = static_cast<std::int32_t>(*zoom);
}
