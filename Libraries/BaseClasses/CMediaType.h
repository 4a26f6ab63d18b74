#pragma once

#include "BaseClasses/MediaTypeMemory.h"

/// An AM_MEDIA_TYPE that owns its format block.
///
/// Adds neither data nor virtual functions: an AM_MEDIA_TYPE* from an enumerator is used as a CMediaType*.
///
/// Owner:  anybody, by value.
/// Thread: like a string.
class CMediaType : public AM_MEDIA_TYPE {
public:
    /// All zero but: fixed-size samples, of one byte.
    CMediaType();
    explicit CMediaType(const GUID* majorType);
    /// @param phr  E_OUTOFMEMORY when the block cannot be copied; may be null
    CMediaType(const AM_MEDIA_TYPE& other, HRESULT* phr = nullptr); // NOLINT(google-explicit-constructor)
    CMediaType(const CMediaType& other, HRESULT* phr = nullptr);    // NOLINT(google-explicit-constructor)
    ~CMediaType();
    CMediaType& operator=(const CMediaType& other);
    CMediaType& operator=(const AM_MEDIA_TYPE& other);

    /// Deep copy in place of what was there.
    /// @return  S_OK; E_OUTOFMEMORY, with a type that has no block
    HRESULT Set(const CMediaType& other);
    HRESULT Set(const AM_MEDIA_TYPE& other);

    /// Compares the three identifiers and the format block; not the sample size and not the two flags.
    BOOL operator==(const CMediaType& other) const;
    BOOL operator!=(const CMediaType& other) const;

    /// Whether there is a major type.
    BOOL IsValid() const;

    const GUID* Type() const { return &majortype; }
    void SetType(const GUID* majorType);
    const GUID* Subtype() const { return &subtype; }
    void SetSubtype(const GUID* subType);

    BOOL IsFixedSize() const { return bFixedSizeSamples; }
    BOOL IsTemporalCompressed() const { return bTemporalCompression; }
    /// Bytes of a sample; 0 when they vary.
    ULONG GetSampleSize() const;
    /// @param bytes  0 = they vary
    void SetSampleSize(ULONG bytes);
    void SetVariableSize();
    void SetTemporalCompression(BOOL compressed);

    const GUID* FormatType() const { return &formattype; }
    void SetFormatType(const GUID* formatType);
    BYTE* Format() const { return pbFormat; }
    ULONG FormatLength() const { return cbFormat; }
    /// Copies a block of n bytes.
    /// @return  FALSE when there is no memory
    BOOL SetFormat(BYTE* format, ULONG n);
    /// Makes room for n bytes: the present block, kept, when it has that size; else a new one, its bytes
    /// undefined.
    /// @return  the block; when there is no memory the old one if it is large enough, else null
    BYTE* AllocFormatBuffer(ULONG n);
    /// As AllocFormatBuffer, but keeps the bytes that both sizes have.
    BYTE* ReallocFormatBuffer(ULONG n);
    void ResetFormatBuffer();

    /// The state of a new object. Frees nothing.
    void InitMediaType();

    /// Whether a type matches this one; what is GUID_NULL in the argument matches everything.
    BOOL MatchesPartial(const CMediaType* partial) const;
    /// Whether major type or format type is missing; the subtype does not count.
    BOOL IsPartiallySpecified() const;
};

static_assert(sizeof(CMediaType) == sizeof(AM_MEDIA_TYPE));
