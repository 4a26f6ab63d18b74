#include "BaseClasses/CMediaType.h"

#include <objbase.h>

#include <algorithm>
#include <cstring>

namespace {

bool HasSameFormatBlock(const AM_MEDIA_TYPE& first, const AM_MEDIA_TYPE& second)
{
    if (first.cbFormat != second.cbFormat)
        return false;
    if (first.cbFormat == 0)
        return true;
    if (first.pbFormat == nullptr || second.pbFormat == nullptr) // half a type, from a stranger
        return first.pbFormat == second.pbFormat;
    return std::memcmp(first.pbFormat, second.pbFormat, first.cbFormat) == 0;
}

} // namespace

CMediaType::CMediaType()
{
    InitMediaType();
}

CMediaType::CMediaType(const GUID* majorType) : CMediaType()
{
    majortype = *majorType;
}

CMediaType::CMediaType(const AM_MEDIA_TYPE& other, HRESULT* phr) : CMediaType()
{
    const HRESULT hr = Set(other);
    if (FAILED(hr) && phr != nullptr)
        *phr = hr;
}

CMediaType::CMediaType(const CMediaType& other, HRESULT* phr)
    : CMediaType(static_cast<const AM_MEDIA_TYPE&>(other), phr)
{
}

CMediaType::~CMediaType()
{
    FreeMediaType(*this);
}

CMediaType&
CMediaType::operator=(const CMediaType& other) // NOLINT(bugprone-unhandled-self-assignment): in Set
{
    Set(other);
    return *this;
}

CMediaType& CMediaType::operator=(const AM_MEDIA_TYPE& other)
{
    Set(other);
    return *this;
}

HRESULT CMediaType::Set(const CMediaType& other)
{
    return Set(static_cast<const AM_MEDIA_TYPE&>(other));
}

HRESULT CMediaType::Set(const AM_MEDIA_TYPE& other)
{
    if (&other == this)
        return S_OK;

    FreeMediaType(*this);
    return CopyMediaType(this, &other);
}

BOOL CMediaType::operator==(const CMediaType& other) const
{
    return majortype == other.majortype && subtype == other.subtype && formattype == other.formattype &&
           HasSameFormatBlock(*this, other);
}

BOOL CMediaType::operator!=(const CMediaType& other) const
{
    return !(*this == other);
}

BOOL CMediaType::IsValid() const
{
    return majortype != GUID_NULL;
}

void CMediaType::SetType(const GUID* majorType)
{
    majortype = *majorType;
}

void CMediaType::SetSubtype(const GUID* subType)
{
    subtype = *subType;
}

ULONG CMediaType::GetSampleSize() const
{
    return bFixedSizeSamples ? lSampleSize : 0;
}

void CMediaType::SetSampleSize(ULONG bytes)
{
    if (bytes == 0) {
        SetVariableSize();
        return;
    }
    bFixedSizeSamples = TRUE;
    lSampleSize = bytes;
}

void CMediaType::SetVariableSize()
{
    bFixedSizeSamples = FALSE;
}

void CMediaType::SetTemporalCompression(BOOL compressed)
{
    bTemporalCompression = compressed;
}

void CMediaType::SetFormatType(const GUID* formatType)
{
    formattype = *formatType;
}

BOOL CMediaType::SetFormat(BYTE* format, ULONG n)
{
    if (n == 0) {
        ResetFormatBuffer();
        return TRUE;
    }
    BYTE* const block = AllocFormatBuffer(n);
    if (block == nullptr)
        return FALSE;
    std::memmove(block, format, n); // the source may be this very block
    return TRUE;
}

BYTE* CMediaType::AllocFormatBuffer(ULONG n)
{
    if (n == cbFormat)
        return pbFormat;
    if (n == 0) {
        ResetFormatBuffer();
        return nullptr;
    }

    auto* const block = static_cast<BYTE*>(::CoTaskMemAlloc(n));
    if (block == nullptr)
        return n <= cbFormat ? pbFormat : nullptr;
    ResetFormatBuffer();
    cbFormat = n;
    pbFormat = block;
    return block;
}

BYTE* CMediaType::ReallocFormatBuffer(ULONG n)
{
    if (n == cbFormat)
        return pbFormat;
    if (n == 0) {
        ResetFormatBuffer();
        return nullptr;
    }

    auto* const block = static_cast<BYTE*>(::CoTaskMemAlloc(n));
    if (block == nullptr)
        return n <= cbFormat ? pbFormat : nullptr;
    if (cbFormat != 0 && pbFormat != nullptr)
        std::memcpy(block, pbFormat, std::min(n, cbFormat));
    ResetFormatBuffer();
    cbFormat = n;
    pbFormat = block;
    return block;
}

void CMediaType::ResetFormatBuffer()
{
    if (cbFormat != 0)
        ::CoTaskMemFree(pbFormat);
    cbFormat = 0;
    pbFormat = nullptr;
}

void CMediaType::InitMediaType()
{
    static_cast<AM_MEDIA_TYPE&>(*this) = AM_MEDIA_TYPE{};
    lSampleSize = 1;
    bFixedSizeSamples = TRUE;
}

BOOL CMediaType::MatchesPartial(const CMediaType* partial) const
{
    if (partial->majortype != GUID_NULL && majortype != partial->majortype)
        return FALSE;
    if (partial->subtype != GUID_NULL && subtype != partial->subtype)
        return FALSE;
    if (partial->formattype != GUID_NULL)
        return formattype == partial->formattype && HasSameFormatBlock(*this, *partial);
    return TRUE;
}

BOOL CMediaType::IsPartiallySpecified() const
{
    return majortype == GUID_NULL || formattype == GUID_NULL;
}
