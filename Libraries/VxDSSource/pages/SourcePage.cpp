#include "VxDSSource/pages/SourcePage.h"

#include "VxDSSource/pages/CommonControlsScope.h"

#include <olectl.h>

namespace pages {

namespace {

constexpr char kPageName[] = "Vexa DirectShow Source Properties";

} // namespace

SourcePage::SourcePage(LPUNKNOWN outer, int dialogId, int titleId)
    : CBasePropertyPage(kPageName, outer, dialogId, titleId)
{
}

STDMETHODIMP SourcePage::Activate(HWND parent, LPCRECT place, BOOL modal)
{
    const CommonControlsScope controls;
    return CBasePropertyPage::Activate(parent, place, modal);
}

STDMETHODIMP SourcePage::GetPageInfo(PROPPAGEINFO* info)
{
    const CommonControlsScope controls; // measured with what it will have
    return CBasePropertyPage::GetPageInfo(info);
}

HRESULT SourcePage::OnConnect(IUnknown* object)
{
    if (object == nullptr)
        return E_POINTER;
    if (FAILED(object->QueryInterface(IID_IVxDSSource, m_source.PutVoid())))
        return E_NOINTERFACE;
    m_isActive = false;
    return S_OK;
}

HRESULT SourcePage::OnDisconnect()
{
    m_source.Reset();
    return S_OK;
}

HRESULT SourcePage::OnDeactivate()
{
    m_isActive = false;
    return S_OK;
}

void SourcePage::MarkDirty()
{
    m_bDirty = TRUE;
    if (m_pPageSite != nullptr)
        m_pPageSite->OnStatusChange(PROPPAGESTATUS_DIRTY);
}

} // namespace pages
