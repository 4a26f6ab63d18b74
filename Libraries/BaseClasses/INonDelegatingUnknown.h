#pragma once

#include <windows.h>

#include <unknwn.h>

/// An object's own IUnknown, beside the one that an outer object may have taken over.
///
/// A pointer to this table is handed out as an IUnknown*: exactly three slots in IUnknown's order, and no
/// destructor, which would take slots of its own.
///
/// Owner:  CUnknown.
/// Thread: any.
struct INonDelegatingUnknown {
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID riid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;
};

using PNDUNKNOWN = INonDelegatingUnknown*;
