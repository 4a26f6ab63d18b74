#include "VxDSSource/filter/ComText.h"

#include <limits>

std::wstring TextOf(BSTR text)
{
    if (text == nullptr)
        return {};
    return std::wstring(text, ::SysStringLen(text));
}

HRESULT ReturnText(std::wstring_view text, BSTR* target)
{
    if (text.size() > std::numeric_limits<UINT>::max())
        return E_OUTOFMEMORY;
    const auto length = static_cast<UINT>(text.size()); // fits, tested above
    BSTR copy = ::SysAllocStringLen(text.data(), length);
    if (copy == nullptr)
        return E_OUTOFMEMORY;
    *target = copy;
    return S_OK;
}
