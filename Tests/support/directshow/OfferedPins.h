#pragma once

#include "BaseClasses/VxComPtr.h"
#include "support/directshow/TestObject.h"

#include <strmif.h>

#include <utility>

/// Enumerates one pin. Lives on the heap and ends with its last reference.
class OfferedPins final : public TestObject<IEnumPins> {
public:
    explicit OfferedPins(VxComPtr<IPin> pin, bool isAtEnd = false) : m_pin(std::move(pin)), m_isAtEnd(isAtEnd)
    {
    }

    STDMETHODIMP Next(ULONG count, IPin** pins, ULONG* fetched) override
    {
        const ULONG returned = count > 0 && !m_isAtEnd ? 1 : 0;
        if (returned == 1) {
            *pins = VxComPtr<IPin>(m_pin).Detach();
            m_isAtEnd = true;
        }
        if (fetched != nullptr)
            *fetched = returned;
        return returned == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override
    {
        const ULONG left = m_isAtEnd ? 0 : 1;
        m_isAtEnd = m_isAtEnd || count > 0;
        return count <= left ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override
    {
        m_isAtEnd = false;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumPins** copy) override
    {
        *copy = new OfferedPins(m_pin, m_isAtEnd);
        (*copy)->AddRef();
        return S_OK;
    }

private:
    void OnLastRelease() override { delete this; }

    const VxComPtr<IPin> m_pin;
    bool m_isAtEnd;
};
