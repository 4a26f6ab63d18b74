#pragma once

#include <windows.h>

#include <strmif.h>

// Structures and format blocks are task memory (CoTaskMemAlloc), because they change hands between modules.
// A type that states a length but has no block is copied as a type without a block.

/// Deep copy.
/// @param target  overwritten: nothing that it held is freed
/// @return  S_OK; E_OUTOFMEMORY, with a target that owns nothing
STDAPI CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source);

/// Gives back what the type holds, and leaves it holding nothing. The structure itself is the caller's.
void WINAPI FreeMediaType(AM_MEDIA_TYPE& type);

/// FreeMediaType, and the structure as well.
/// @param type  may be null
void WINAPI DeleteMediaType(AM_MEDIA_TYPE* type);

/// @return  deep copy, for DeleteMediaType; null when there is no memory
AM_MEDIA_TYPE* WINAPI CreateMediaType(const AM_MEDIA_TYPE* source);
