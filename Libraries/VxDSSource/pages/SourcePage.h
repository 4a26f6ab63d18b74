#pragma once

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CBasePropertyPage.h"
#include "BaseClasses/VxComPtr.h"
#include "VxDSSource/filter/IVxDSSource.h"

namespace pages {

/// What the filter's pages have in common: they reach the filter through its control interface only.
///
/// Owner:  its references.
/// Thread: the property frame's window thread.
class SourcePage : public CBasePropertyPage {
public:
    STDMETHODIMP Activate(HWND parent, LPCRECT place, BOOL modal) override;
    STDMETHODIMP GetPageInfo(PROPPAGEINFO* info) override;

    /// @return  E_POINTER without an object; E_NOINTERFACE when it is not our filter
    HRESULT OnConnect(IUnknown* object) override;
    HRESULT OnDisconnect() override;
    HRESULT OnDeactivate() override;

protected:
    SourcePage(LPUNKNOWN outer, int dialogId, int titleId);

    /// Tells the frame that there is something to apply.
    void MarkDirty();

    [[nodiscard]] HWND Item(int id) const { return ::GetDlgItem(m_hwnd, id); }

    VxComPtr<IVxDSSource> m_source; // empty while no object is set
    bool m_isActive = false;        // what the controls say is the user's doing
};

/// For the class table.
template <typename Page>
CUnknown* CALLBACK CreatePage(LPUNKNOWN outer, HRESULT* phr)
{
    CUnknown* page = nullptr;
    const HRESULT result = AtComEdge([&] {
        page = new Page(outer);
        return S_OK;
    });
    if (FAILED(result) && phr != nullptr)
        *phr = result;
    return page;
}

} // namespace pages
