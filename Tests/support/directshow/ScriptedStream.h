#pragma once

#include "support/directshow/TestObject.h"

#include <objidl.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <vector>

/// A stream on memory whose end and failures the test decides.
class ScriptedStream final : public TestObject<IStream> {
public:
    std::vector<std::byte> bytes;
    std::size_t position = 0;
    HRESULT atEnd = S_OK; // of a Read that returns less than it was asked for: S_OK or S_FALSE, both occur
    std::optional<HRESULT> reading;      // every Read fails with this
    std::optional<HRESULT> writing;      // every Write fails with this
    std::optional<std::size_t> room;     // what does not fit fails with STG_E_MEDIUMFULL
    std::optional<std::size_t> readable; // a Read beyond fails with STG_E_READFAULT

    STDMETHODIMP Read(void* target, ULONG count, ULONG* read) override
    {
        if (read != nullptr)
            *read = 0;
        if (reading)
            return *reading;
        if (readable && position + count > *readable)
            return STG_E_READFAULT;
        const auto available = static_cast<ULONG>(std::min<std::size_t>(count, bytes.size() - position));
        std::memcpy(target, bytes.data() + position, available);
        position += available;
        if (read != nullptr)
            *read = available;
        return available == count ? S_OK : atEnd;
    }
    STDMETHODIMP Write(const void* source, ULONG count, ULONG* written) override
    {
        if (writing)
            return *writing;
        if (room && bytes.size() + count > *room)
            return STG_E_MEDIUMFULL;
        const auto* const first = static_cast<const std::byte*>(source);
        bytes.insert(bytes.end(), first, first + count);
        if (written != nullptr)
            *written = count;
        return S_OK;
    }
    STDMETHODIMP Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    STDMETHODIMP SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    STDMETHODIMP CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Commit(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP Revert() override { return E_NOTIMPL; }
    STDMETHODIMP LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IStream**) override { return E_NOTIMPL; }
};
