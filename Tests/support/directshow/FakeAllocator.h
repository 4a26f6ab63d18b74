#pragma once

#include "support/directshow/TestObject.h"

#include <strmif.h>

/// An allocator without samples: answers as told and records what it was asked.
class FakeAllocator final : public TestObject<IMemAllocator> {
public:
    HRESULT setting = S_OK;
    HRESULT committing = S_OK;
    HRESULT decommitting = S_OK;

    ALLOCATOR_PROPERTIES asked = {};
    int commits = 0;
    int decommits = 0;

    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override
    {
        asked = *request;
        *actual = *request;
        return setting;
    }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* properties) override
    {
        *properties = asked;
        return S_OK;
    }
    STDMETHODIMP Commit() override
    {
        ++commits;
        return committing;
    }
    STDMETHODIMP Decommit() override
    {
        ++decommits;
        return decommitting;
    }
    STDMETHODIMP GetBuffer(IMediaSample** sample, REFERENCE_TIME* /*start*/, REFERENCE_TIME* /*stop*/,
                           DWORD /*flags*/) override
    {
        *sample = nullptr;
        return E_FAIL;
    }
    STDMETHODIMP ReleaseBuffer(IMediaSample* /*sample*/) override { return E_UNEXPECTED; }
};
