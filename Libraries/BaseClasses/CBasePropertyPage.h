#pragma once

#include "BaseClasses/CUnknown.h"

#include <ocidl.h>

/// A property page made from a dialog template of the module.
///
/// Life: SetPageSite; SetObjects (OnConnect); Activate (OnActivate), Apply (OnApplyChanges) any number of
/// times, Deactivate (OnDeactivate), all of this again if the frame wants; SetObjects(0) (OnDisconnect);
/// SetPageSite(null). The last Release runs SetPageSite(null) and SetObjects(0) once more, so OnDisconnect
/// must bear being called again.
///
/// Owner:  its references.
/// Thread: the one that creates it; not locked.
class CBasePropertyPage : public IPropertyPage, public CUnknown {
public:
    DECLARE_IUNKNOWN

    /// @param dialogId  template: WS_CHILD and DS_CONTROL, no caption, no border, not WS_VISIBLE
    /// @param titleId   string of the tab's title
    CBasePropertyPage(LPCTSTR objectName, LPUNKNOWN outer, int dialogId, int titleId);
    CBasePropertyPage(LPCSTR objectName, LPUNKNOWN outer, int dialogId, int titleId);
    ~CBasePropertyPage() override;

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

    // IPropertyPage
    STDMETHODIMP SetPageSite(IPropertyPageSite* site) override;
    STDMETHODIMP Activate(HWND parent, LPCRECT place, BOOL modal) override;
    STDMETHODIMP Deactivate() override;
    STDMETHODIMP GetPageInfo(PROPPAGEINFO* info) override;
    STDMETHODIMP SetObjects(ULONG count, IUnknown** objects) override;
    STDMETHODIMP Show(UINT command) override;
    STDMETHODIMP Move(LPCRECT place) override;
    STDMETHODIMP IsPageDirty() override;
    STDMETHODIMP Apply() override;
    STDMETHODIMP Help(LPCOLESTR helpFolder) override;
    STDMETHODIMP TranslateAccelerator(MSG* message) override;

    /// The page gets its object. May come twice without OnDisconnect between: release what is held first.
    virtual HRESULT OnConnect(IUnknown* /*object*/) { return S_OK; }
    virtual HRESULT OnDisconnect() { return S_OK; }
    /// The window is there, not yet placed and shown.
    virtual HRESULT OnActivate() { return S_OK; }
    /// The window and its controls are still there.
    virtual HRESULT OnDeactivate() { return S_OK; }
    virtual HRESULT OnApplyChanges() { return S_OK; }

    /// A message to the page's window. During its creation m_hwnd is null: use the argument.
    /// WM_CLOSE is swallowed: a multi-line edit posts it on Esc, and it would destroy the window behind the
    /// page's back.
    /// @return  not 0: handled
    virtual INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

protected:
    static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    IPropertyPageSite* m_pPageSite = nullptr; // held
    HWND m_hwnd = nullptr;                    // the page's window while it is active
    HWND m_Dlg = nullptr;                     // the window last created
    BOOL m_bDirty = FALSE;
    int m_TitleId;
    int m_DialogId;

private:
    BOOL m_bObjectSet = FALSE;
};
