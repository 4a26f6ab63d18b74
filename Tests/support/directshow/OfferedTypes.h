#pragma once

#include "BaseClasses/CMediaType.h"
#include "support/directshow/TestObject.h"

#include <functional>
#include <utility>
#include <vector>

/// Enumerates a list of types. Lives on the heap and ends with its last reference.
class OfferedTypes final : public TestObject<IEnumMediaTypes> {
public:
    explicit OfferedTypes(std::vector<CMediaType> types, HRESULT reset = S_OK)
        : m_types(std::move(types)), m_reset(reset)
    {
    }

    STDMETHODIMP Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) override
    {
        ULONG returned = 0;
        while (returned < count && m_position < m_types.size())
            types[returned++] = CreateMediaType(&m_types[m_position++]);
        if (fetched != nullptr)
            *fetched = returned;
        return returned == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG /*count*/) override { return E_NOTIMPL; }
    STDMETHODIMP Reset() override
    {
        m_position = 0;
        return m_reset;
    }
    STDMETHODIMP Clone(IEnumMediaTypes** /*copy*/) override { return E_NOTIMPL; }

private:
    void OnLastRelease() override { delete this; }

    const std::vector<CMediaType> m_types;
    const HRESULT m_reset;
    std::size_t m_position = 0;
};
