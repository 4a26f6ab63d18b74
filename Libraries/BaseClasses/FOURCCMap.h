#pragma once

#include <windows.h>

/// The identifier that belongs to a four-character code: {code-0000-0010-8000-00AA00389B71}.
///
/// Owner:  anybody, by value.
/// Thread: like a number.
class FOURCCMap : public GUID {
public:
    FOURCCMap() : FOURCCMap(DWORD{0}) {}
    explicit FOURCCMap(DWORD fourcc)
        : GUID{fourcc, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}}
    {
    }
    /// Takes the code out of an identifier, whatever its other fields are.
    explicit FOURCCMap(const GUID* guid) : FOURCCMap(static_cast<DWORD>(guid->Data1)) {}

    DWORD GetFOURCC() const { return static_cast<DWORD>(Data1); }
    void SetFOURCC(DWORD fourcc) { Data1 = fourcc; }
    void SetFOURCC(const GUID* guid) { Data1 = guid->Data1; }
};

static_assert(sizeof(FOURCCMap) == sizeof(GUID));
