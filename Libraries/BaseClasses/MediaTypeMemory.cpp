#include "BaseClasses/MediaTypeMemory.h"

#include <objbase.h>

#include <cstring>

STDAPI CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source)
{
    *target = *source;
    target->cbFormat = 0;
    target->pbFormat = nullptr;
    target->pUnk = nullptr;

    if (source->cbFormat != 0 && source->pbFormat != nullptr) {
        target->pbFormat = static_cast<BYTE*>(::CoTaskMemAlloc(source->cbFormat));
        if (target->pbFormat == nullptr)
            return E_OUTOFMEMORY;
        target->cbFormat = source->cbFormat;
        std::memcpy(target->pbFormat, source->pbFormat, source->cbFormat);
    }
    if (source->pUnk != nullptr) {
        target->pUnk = source->pUnk;
        target->pUnk->AddRef();
    }
    return S_OK;
}

void WINAPI FreeMediaType(AM_MEDIA_TYPE& type)
{
    // Without a length the pointer means nothing: strangers leave it uninitialised.
    if (type.cbFormat != 0)
        ::CoTaskMemFree(type.pbFormat);
    type.cbFormat = 0;
    type.pbFormat = nullptr;

    if (type.pUnk != nullptr) {
        type.pUnk->Release();
        type.pUnk = nullptr;
    }
}

void WINAPI DeleteMediaType(AM_MEDIA_TYPE* type)
{
    if (type == nullptr)
        return;
    FreeMediaType(*type);
    ::CoTaskMemFree(type);
}

AM_MEDIA_TYPE* WINAPI CreateMediaType(const AM_MEDIA_TYPE* source)
{
    auto* const copy = static_cast<AM_MEDIA_TYPE*>(::CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (copy == nullptr)
        return nullptr;
    if (FAILED(CopyMediaType(copy, source))) {
        ::CoTaskMemFree(copy);
        return nullptr;
    }
    return copy;
}
