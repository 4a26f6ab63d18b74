#pragma once

#include "support/directshow/TestObject.h"

#include <strmif.h>

#include <functional>

/// A clock that shows what the test says.
class FakeClock final : public TestObject<IReferenceClock> {
public:
    REFERENCE_TIME now = 0;
    HRESULT telling = S_OK;
    std::function<void()> onLastRelease; ///< called while the last holder lets go

    STDMETHODIMP GetTime(REFERENCE_TIME* time) override
    {
        *time = now;
        return telling;
    }
    STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }

private:
    void OnLastRelease() override
    {
        if (onLastRelease)
            onLastRelease();
    }
};
