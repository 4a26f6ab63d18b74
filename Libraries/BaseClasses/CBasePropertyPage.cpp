#include "BaseClasses/CBasePropertyPage.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/ModuleGlobals.h"
#include "BaseClasses/WideStrings.h"

#include <olectl.h>

#include <algorithm>
#include <array>
#include <tuple>

namespace {

// Fixed by the platform: size of a page whose template cannot be measured, in pixels.
constexpr SIZE kDefaultSizePx = {340, 150};

INT_PTR AtDialogEdge(CBasePropertyPage& page, HWND window, UINT message, WPARAM wParam,
                     LPARAM lParam) noexcept
{
    try {
        return page.OnReceiveMessage(window, message, wParam, lParam);
    } catch (...) {
        return FALSE; // not handled; nothing may be thrown through the system's window code
    }
}

} // namespace

CBasePropertyPage::CBasePropertyPage(LPCTSTR objectName, LPUNKNOWN outer, int dialogId, int titleId)
    : CUnknown(objectName, outer), m_TitleId(titleId), m_DialogId(dialogId)
{
}

CBasePropertyPage::CBasePropertyPage(LPCSTR objectName, LPUNKNOWN outer, int dialogId, int titleId)
    : CUnknown(objectName, outer), m_TitleId(titleId), m_DialogId(dialogId)
{
}

CBasePropertyPage::~CBasePropertyPage()
{
    if (m_hwnd == nullptr)
        return;
    // The frame has let go of an active page: its window must not call back into nothing.
    ::SetWindowLongPtrW(m_hwnd, DWLP_USER, 0);
    ::DestroyWindow(m_hwnd);
}

STDMETHODIMP CBasePropertyPage::NonDelegatingQueryInterface(REFIID riid, void** object)
{
    if (riid == IID_IPropertyPage)
        return GetInterface(static_cast<IPropertyPage*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

STDMETHODIMP_(ULONG) CBasePropertyPage::NonDelegatingAddRef()
{
    return CUnknown::NonDelegatingAddRef();
}

STDMETHODIMP_(ULONG) CBasePropertyPage::NonDelegatingRelease()
{
    const LONG count = ::InterlockedDecrement(&m_cRef);
    if (count != 0)
        return static_cast<ULONG>(std::max<LONG>(count, 1));

    m_cRef = 1; // what follows may take and give back references
    SetPageSite(nullptr);
    SetObjects(0, nullptr);
    delete this;
    return 0;
}

STDMETHODIMP CBasePropertyPage::SetPageSite(IPropertyPageSite* site)
{
    if ((site != nullptr) == (m_pPageSite != nullptr))
        return E_UNEXPECTED;

    if (site != nullptr)
        site->AddRef();
    else
        m_pPageSite->Release();
    m_pPageSite = site;
    return S_OK;
}

STDMETHODIMP CBasePropertyPage::SetObjects(ULONG count, IUnknown** objects)
{
    if (count == 1) {
        if (objects == nullptr || objects[0] == nullptr)
            return E_POINTER;
        m_bObjectSet = TRUE;
        return AtComEdge([&] { return OnConnect(objects[0]); });
    }
    if (count == 0) {
        m_bObjectSet = FALSE;
        return AtComEdge([&] { return OnDisconnect(); });
    }
    return E_UNEXPECTED; // one page, one object
}

STDMETHODIMP CBasePropertyPage::GetPageInfo(PROPPAGEINFO* info)
{
    if (info == nullptr)
        return E_POINTER;

    std::array<WCHAR, STR_MAX_LENGTH> title{};
    ::LoadStringW(g_hInst, static_cast<UINT>(m_TitleId), title.data(), STR_MAX_LENGTH);
    const HRESULT hr = AMGetWideString(title.data(), &info->pszTitle);
    if (FAILED(hr))
        return hr;

    info->cb = sizeof(PROPPAGEINFO);
    info->size = kDefaultSizePx;
    info->pszDocString = nullptr;
    info->pszHelpFile = nullptr;
    info->dwHelpContext = 0;

    // The size in pixels depends on font and resolution: make the dialog and measure it. Without a page its
    // procedure does nothing.
    const HWND dialog = ::CreateDialogParamW(g_hInst, MAKEINTRESOURCEW(m_DialogId), ::GetDesktopWindow(),
                                             &CBasePropertyPage::DialogProc, 0);
    if (dialog != nullptr) {
        RECT place = {};
        ::GetWindowRect(dialog, &place);
        info->size = {place.right - place.left, place.bottom - place.top};
        ::DestroyWindow(dialog);
    }
    return S_OK;
}

STDMETHODIMP CBasePropertyPage::Activate(HWND parent, LPCRECT place, BOOL /*modal*/)
{
    if (place == nullptr)
        return E_POINTER;
    if (!m_bObjectSet || m_hwnd != nullptr)
        return E_UNEXPECTED;

    m_hwnd = ::CreateDialogParamW(g_hInst, MAKEINTRESOURCEW(m_DialogId), parent,
                                  &CBasePropertyPage::DialogProc, reinterpret_cast<LPARAM>(this));
    if (m_hwnd == nullptr)
        return E_OUTOFMEMORY;

    std::ignore = AtComEdge([&] { return OnActivate(); }); // the page is shown all the same
    Move(place);
    return Show(SW_SHOWNORMAL);
}

STDMETHODIMP CBasePropertyPage::Deactivate()
{
    if (m_hwnd == nullptr)
        return E_UNEXPECTED;

    // Without m_hwnd, so that OnReceiveMessage does not put the style back.
    const HWND window = m_hwnd;
    m_hwnd = nullptr;
    const LONG_PTR style = ::GetWindowLongPtrW(window, GWL_EXSTYLE);
    ::SetWindowLongPtrW(window, GWL_EXSTYLE, style & ~static_cast<LONG_PTR>(WS_EX_CONTROLPARENT));
    m_hwnd = window;

    std::ignore = AtComEdge([&] { return OnDeactivate(); }); // the page goes all the same
    ::DestroyWindow(m_hwnd);
    m_hwnd = nullptr;
    return S_OK;
}

STDMETHODIMP CBasePropertyPage::Move(LPCRECT place)
{
    if (place == nullptr)
        return E_POINTER;
    if (m_hwnd == nullptr)
        return E_UNEXPECTED;
    ::MoveWindow(m_hwnd, place->left, place->top, place->right - place->left, place->bottom - place->top,
                 TRUE);
    return S_OK;
}

STDMETHODIMP CBasePropertyPage::Show(UINT command)
{
    if (m_hwnd == nullptr)
        return E_UNEXPECTED;
    if (command != SW_SHOW && command != SW_SHOWNORMAL && command != SW_HIDE)
        return E_INVALIDARG;
    ::ShowWindow(m_hwnd, static_cast<int>(command));
    ::InvalidateRect(m_hwnd, nullptr, TRUE);
    return S_OK;
}

STDMETHODIMP CBasePropertyPage::IsPageDirty()
{
    return m_bDirty ? S_OK : S_FALSE;
}

STDMETHODIMP CBasePropertyPage::Apply()
{
    if (!m_bObjectSet || m_pPageSite == nullptr)
        return E_UNEXPECTED;
    if (!m_bDirty)
        return S_OK;

    const HRESULT hr = AtComEdge([&] { return OnApplyChanges(); });
    if (SUCCEEDED(hr))
        m_bDirty = FALSE;
    return hr;
}

STDMETHODIMP CBasePropertyPage::Help(LPCOLESTR /*helpFolder*/)
{
    return E_NOTIMPL;
}

STDMETHODIMP CBasePropertyPage::TranslateAccelerator(MSG* /*message*/)
{
    return E_NOTIMPL;
}

INT_PTR CBasePropertyPage::OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_hwnd == nullptr) // during creation, and while Deactivate changes the style
        return FALSE;

    if (message == WM_CLOSE)
        return TRUE;
    if (message == WM_STYLECHANGING && static_cast<int>(wParam) == GWL_EXSTYLE) {
        // Lets Tab travel into the page's controls.
        reinterpret_cast<STYLESTRUCT*>(lParam)->styleNew |= WS_EX_CONTROLPARENT;
        return FALSE;
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
}

INT_PTR CALLBACK CBasePropertyPage::DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        ::SetWindowLongPtrW(window, DWLP_USER, lParam);
        if (auto* const page = reinterpret_cast<CBasePropertyPage*>(lParam))
            page->m_Dlg = window;
    }

    // Messages before WM_INITDIALOG, and those of a dialog that is only measured, have no page.
    auto* const page = reinterpret_cast<CBasePropertyPage*>(::GetWindowLongPtrW(window, DWLP_USER));
    return page != nullptr ? AtDialogEdge(*page, window, message, wParam, lParam) : TRUE;
}
