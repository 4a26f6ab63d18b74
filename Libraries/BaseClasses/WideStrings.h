#pragma once

#include <windows.h>

/// Characters that texts of the base classes have at most, the terminator included.
inline constexpr int STR_MAX_LENGTH = 256;

/// Units that IntToWstr writes at most: sign, ten digits, terminator.
inline constexpr int kIntToWstrUnits = 12;

/// Copies a text into task memory.
/// @param copy  receives the copy; the caller frees it with CoTaskMemFree
/// @return  S_OK; E_POINTER, E_OUTOFMEMORY
STDAPI AMGetWideString(LPCWSTR text, LPWSTR* copy);

/// Writes a number in decimal.
/// @param text  room for kIntToWstrUnits
void WINAPI IntToWstr(int number, LPWSTR text);

/// Reads a decimal number: leading blanks, sign, digits; 0 when there is none. What follows is ignored.
int WINAPI WstrToInt(LPCWSTR text);
