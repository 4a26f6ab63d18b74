#pragma once

#include <windows.h>

#include <objidl.h>

/// Bytes of a number in a stream: 11 characters and a blank, of 16 bits each.
inline constexpr ULONG kStreamIntegerBytes = 24;

/// Writes a number as text: padded with zeros to 11 characters (a minus sign is one of them), then a blank.
STDAPI WriteInt(IStream* stream, int number);

/// Reads a number up to and including the blank, tab, end of line or terminator behind it.
///
/// Beyond the platform's contract: a stream that ends inside the number is a failure; the platform's own
/// reading never returns then.
///
/// @param hr  S_OK; what the stream's Read failed with; VFW_E_INVALID_FILE_FORMAT for anything that is not a
/// number
/// @return  the number; 0 on failure
int WINAPI ReadInt(IStream* stream, HRESULT& hr);
