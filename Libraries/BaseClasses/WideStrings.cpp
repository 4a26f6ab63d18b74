#include "BaseClasses/WideStrings.h"

#include <objbase.h>

#include <cwchar>

STDAPI AMGetWideString(LPCWSTR text, LPWSTR* copy)
{
    if (copy == nullptr)
        return E_POINTER;
    *copy = nullptr;
    if (text == nullptr)
        return E_POINTER;

    const std::size_t units = std::wcslen(text) + 1;
    auto* const block = static_cast<LPWSTR>(::CoTaskMemAlloc(units * sizeof(WCHAR)));
    if (block == nullptr)
        return E_OUTOFMEMORY;
    std::wmemcpy(block, text, units);
    *copy = block;
    return S_OK;
}

void WINAPI IntToWstr(int number, LPWSTR text)
{
    ::_itow(number, text, 10);
}

int WINAPI WstrToInt(LPCWSTR text)
{
    return ::_wtoi(text);
}
