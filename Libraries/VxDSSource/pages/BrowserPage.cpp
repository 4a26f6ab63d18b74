#include "VxDSSource/pages/BrowserPage.h"

#include "VxDSSource/pages/ComString.h"
#include "VxDSSource/pages/DialogItems.h"
#include "VxDSSource/pages/ResourceIds.h"

using namespace pages;

namespace {

// Fixed: what is read of the value box at most.
constexpr std::size_t kLongestValue = 1024;
// Fixed by GenICam: this level and those above are not for people.
constexpr INT kInvisible = 3;

constexpr wchar_t kProductName[] = L"VxDSSource";
constexpr wchar_t kFailure[] = L"Operation failed.";

bool IsVisible(IVxDSSource& source, const std::wstring& feature)
{
    UINT visibility = 0;
    source.GetParameterVisibility(ComString(feature).Get(), &visibility);
    return static_cast<INT>(visibility) < kInvisible;
}

/// No drawing while a window is filled.
class RedrawPause final {
public:
    explicit RedrawPause(HWND window) : m_window(window) { ::SendMessageW(m_window, WM_SETREDRAW, FALSE, 0); }
    ~RedrawPause()
    {
        ::SendMessageW(m_window, WM_SETREDRAW, TRUE, 0);
        ::InvalidateRect(m_window, nullptr, TRUE);
    }
    RedrawPause(const RedrawPause&) = delete;
    RedrawPause& operator=(const RedrawPause&) = delete;

private:
    HWND m_window; // borrowed for the scope
};

} // namespace

BrowserPage::BrowserPage(LPUNKNOWN outer) : SourcePage(outer, IDD_BROWSER_PAGE, IDS_BROWSER_TITLE)
{
    // The template names the tree view's class, which has to be there when the dialog is made.
    INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_TREEVIEW_CLASSES};
    ::InitCommonControlsEx(&classes);
}

HRESULT BrowserPage::OnActivate()
{
    m_tree.Attach(Item(IDC_FEATURES));
    FillList(Item(IDC_FEATURE_SET), {L"Communication Parameters", L"Device Parameters", L"Stream Parameters"},
             0);
    BuildTree();
    return S_OK;
}

HRESULT BrowserPage::OnDeactivate()
{
    m_refresher.Stop();
    return SourcePage::OnDeactivate();
}

HRESULT BrowserPage::OnDisconnect()
{
    m_refresher.Stop(); // runs still where a frame lets go of a page that it did not deactivate
    return SourcePage::OnDisconnect();
}

INT_PTR BrowserPage::OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_NOTIFY: {
        const auto& header =
            *reinterpret_cast<const NMHDR*>(lParam); // NOLINT(performance-no-int-to-ptr): a message
        if (header.idFrom != IDC_FEATURES ||
            (header.code != TVN_SELCHANGEDW && header.code != TVN_SELCHANGEDA))
            break;
        OnSelectionChanged();
        return TRUE;
    }
    case WM_COMMAND:
        if (!OnCommand(LOWORD(wParam), HIWORD(wParam)))
            break;
        return TRUE;
    case FeatureRefresher::kRefreshMessage:
        OnRefresh(reinterpret_cast<HTREEITEM>(lParam)); // NOLINT(performance-no-int-to-ptr): a message
        return TRUE;
    default:
        break;
    }
    return SourcePage::OnReceiveMessage(window, message, wParam, lParam);
}

bool BrowserPage::OnCommand(int control, int notification)
{
    if (control == IDC_FEATURE_SET && notification == CBN_SELCHANGE)
        BuildTree();
    else if (control == IDC_VALUE && notification == CBN_DROPDOWN)
        FillValueList();
    else if (control == IDC_SET && notification == BN_CLICKED)
        SetValue();
    else if (control == IDC_EXECUTE && notification == BN_CLICKED)
        ExecuteCommand();
    else
        return false;
    return true;
}

void BrowserPage::BuildTree()
{
    const LRESULT chosen = ::SendMessageW(Item(IDC_FEATURE_SET), CB_GETCURSEL, 0, 0);
    if (!m_source || chosen < 0)
        return;
    const auto set = static_cast<UINT>(chosen); // 0 to 2
    UINT present = 0;
    m_source->GetParameterArray(&present);
    if (set == present && !m_tree.IsEmpty())
        return;

    m_refresher.Stop();
    m_source->SetParameterArray(set);
    {
        const RedrawPause pause(Item(IDC_FEATURES));
        m_refresher.Clear(); // first: while its items go, the tree tells of other selections
        m_tree.Clear();
        ShowNoFeature();
        BOOL isAvailable = FALSE;
        m_source->IsParameterArrayAvailable(&isAvailable);
        if (!isAvailable)
            return;
        InsertFeatures();
        m_tree.Expand();
    }
    if (!m_refresher.IsRunning())
        m_refresher.Start(m_source, m_hwnd);
}

void BrowserPage::InsertFeatures()
{
    UINT count = 0;
    m_source->GetParameterCount(&count);
    for (UINT index = 0; index < count; ++index) {
        ComString name;
        if (SUCCEEDED(m_source->GetParameterName(index, name.Put())))
            InsertFeature(name.Text());
    }
}

void BrowserPage::InsertFeature(const std::wstring& name)
{
    const ComString feature(name);
    ComString path;
    ComString type;
    m_source->GetParameterCategory(feature.Get(), path.Put());
    m_source->GetParameterType(feature.Get(), type.Put());
    if (!IsVisible(*m_source.Get(), name))
        return;
    if (HTREEITEM const leaf = m_tree.Insert(path.Text(), name))
        m_refresher.Add(leaf, {name, type.Text()});
}

void BrowserPage::OnRefresh(HTREEITEM leaf)
{
    // A message may still be under way for an item that is gone.
    if (auto text = m_refresher.LeafText(leaf))
        m_tree.SetText(leaf, std::move(*text));
}

void BrowserPage::OnSelectionChanged()
{
    const FeatureEntry* const feature = m_refresher.Find(m_tree.Selected());
    if (feature == nullptr || !m_source) {
        ShowNoFeature();
        return;
    }
    const FeatureAccess access = ReadAccess(*m_source.Get(), feature->name);
    const bool isSettable = access.isWritable && !feature->IsCommand();
    std::wstring value;
    if (access.isReadable && !feature->IsCommand())
        value = ReadValue(*m_source.Get(), feature->name);
    ::EnableWindow(Item(IDC_EXECUTE), feature->IsCommand());
    ::EnableWindow(Item(IDC_SET), isSettable);
    ::EnableWindow(Item(IDC_VALUE), isSettable);
    ::SendMessageW(Item(IDC_VALUE), CB_RESETCONTENT, 0, 0); // the entries of the feature before
    ::SetDlgItemTextW(m_hwnd, IDC_VALUE, value.c_str());
}

void BrowserPage::FillValueList()
{
    HWND const box = Item(IDC_VALUE);
    const std::wstring typed = ItemText(box, kLongestValue);
    ::SendMessageW(box, CB_RESETCONTENT, 0, 0); // empties the edit part, too
    ::SetWindowTextW(box, typed.c_str());
    const std::wstring name = SelectedFeature();
    if (name.empty())
        return;
    const ComString feature(name);
    UINT count = 0;
    m_source->GetEnumEntryCount(feature.Get(), &count);
    const auto entries = static_cast<INT>(count); // signed: a count that no feature has is none
    for (INT index = 0; index < entries; ++index) {
        ComString entry;
        if (SUCCEEDED(m_source->GetEnumEntryName(feature.Get(), static_cast<UINT>(index), entry.Put())))
            ::SendMessageW(box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.Text().c_str()));
    }
}

void BrowserPage::SetValue()
{
    const std::wstring name = SelectedFeature();
    if (name.empty())
        return;
    const ComString value(ItemText(Item(IDC_VALUE), kLongestValue));
    ComString reason;
    if (FAILED(m_source->SetParameterValue(ComString(name).Get(), value.Get(), reason.Put())))
        ShowFailure(reason.Text());
}

void BrowserPage::ExecuteCommand()
{
    const std::wstring name = SelectedFeature();
    if (name.empty())
        return;
    ComString reason;
    if (FAILED(m_source->ExecuteCommand(ComString(name).Get(), reason.Put())))
        ShowFailure(reason.Text());
}

void BrowserPage::ShowNoFeature()
{
    ::EnableWindow(Item(IDC_EXECUTE), FALSE);
    ::EnableWindow(Item(IDC_SET), FALSE);
    ::EnableWindow(Item(IDC_VALUE), FALSE);
    ::SendMessageW(Item(IDC_VALUE), CB_RESETCONTENT, 0, 0);
    ::SetDlgItemTextW(m_hwnd, IDC_VALUE, L"");
}

void BrowserPage::ShowFailure(const std::wstring& reason)
{
    const std::wstring text = kFailure + reason;
    ::MessageBoxW(m_hwnd, text.c_str(), kProductName, MB_OK | MB_ICONWARNING);
}

std::wstring BrowserPage::SelectedFeature() const
{
    const FeatureEntry* const feature = m_refresher.Find(m_tree.Selected());
    return feature != nullptr && m_source ? feature->name : std::wstring();
}
