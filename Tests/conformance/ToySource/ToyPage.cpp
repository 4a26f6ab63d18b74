#include "ToyPage.h"

#include "ToyResources.h"

CUnknown* WINAPI CToyPage::CreateInstance(LPUNKNOWN pUnk, HRESULT* phr)
{
    CUnknown* punk = new CToyPage(pUnk);
    if (punk == NULL && phr != NULL)
        *phr = E_OUTOFMEMORY;
    return punk;
}

CToyPage::CToyPage(LPUNKNOWN pUnk) : CBasePropertyPage(NAME("Toy page"), pUnk, IDD_TOY_PAGE, IDS_TOY_PAGE) {}
