#include "VxDSSource/pages/AboutPage.h"

#include "VxBase/VxString.h"
#include "VxDSSource/pages/ResourceIds.h"

#include <string>

namespace {

constexpr char kProductVersion[] = VX_PRODUCT_VERSION; // set by the build
constexpr char kLegalNotice[] =
    "Copyright (c) 2026 Vantrel Technologies Inc. Licensed under the Apache License, Version 2.0.";

} // namespace

AboutPage::AboutPage(LPUNKNOWN outer) : SourcePage(outer, IDD_ABOUT_PAGE, IDS_ABOUT_TITLE) {}

HRESULT AboutPage::OnActivate()
{
    m_logo.Show(::GetWindow(m_hwnd, GW_CHILD), IDB_LOGO); // the topmost control, which has no identifier
    const VxString version(std::string("Vexa SDK") + " Version " + kProductVersion);
    ::SetDlgItemTextW(m_hwnd, IDC_VERSION, version.GetUnicode());
    ::SetDlgItemTextW(m_hwnd, IDC_LEGAL_NOTICE, VxString(kLegalNotice).GetUnicode());
    return S_OK;
}

HRESULT AboutPage::OnDeactivate()
{
    m_logo.Remove();
    return SourcePage::OnDeactivate();
}

INT_PTR AboutPage::OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_COMMAND)
        return TRUE; // there is nothing to edit, so no command makes this page dirty
    return SourcePage::OnReceiveMessage(window, message, wParam, lParam);
}
