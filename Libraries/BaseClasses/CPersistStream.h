#pragma once

#include "BaseClasses/CUnknown.h"

#include <objidl.h>

/// Stores and restores an object in a saved graph: a version number as text, then what the derived class
/// writes.
///
/// Carries no IUnknown of its own: the deriving class answers IPersistStream.
///
/// Owner:  the deriving object.
/// Thread: that of the deriving object; not locked.
class CPersistStream : public IPersistStream {
public:
    /// Neither argument is used.
    CPersistStream(IUnknown* outer, HRESULT* phr);
    CPersistStream(const CPersistStream&) = delete;
    CPersistStream& operator=(const CPersistStream&) = delete;

    // IPersist: the deriving class identifies itself.
    STDMETHODIMP GetClassID(CLSID* clsid) override = 0;

    // IPersistStream
    STDMETHODIMP IsDirty() override;
    /// The version is stored, not compared: no value is refused here.
    STDMETHODIMP Load(IStream* stream) override;
    /// With clearDirty FALSE the object is dirty afterwards, even if it was not before.
    STDMETHODIMP Save(IStream* stream, BOOL clearDirty) override;
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* bytes) override;

    HRESULT SetDirty(BOOL dirty);

    /// Version written by Save.
    virtual DWORD GetSoftwareVersion();
    /// Bytes that WriteToStream writes at most.
    virtual int SizeMax();
    virtual HRESULT WriteToStream(IStream* stream);
    virtual HRESULT ReadFromStream(IStream* stream);

protected:
    ~CPersistStream() = default;

    DWORD mPS_dwFileVersion = 0; // version read by Load
    BOOL mPS_fDirty = FALSE;
};
