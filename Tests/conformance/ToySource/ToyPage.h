#pragma once

#include <streams.h>

/// The toy's property page: shows nothing and applies nothing.
class CToyPage : public CBasePropertyPage {
public:
    static CUnknown* WINAPI CreateInstance(LPUNKNOWN pUnk, HRESULT* phr);

private:
    explicit CToyPage(LPUNKNOWN pUnk);
};
