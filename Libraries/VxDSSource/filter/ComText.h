#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <string_view>

/// Text of a BSTR, with the length the BSTR itself has.
/// @param text  null reads as empty text
[[nodiscard]] std::wstring TextOf(BSTR text);

/// Hands a text out through COM.
/// @param[out] target  a new BSTR, freed by the caller; untouched on failure; must not be null
/// @return  E_OUTOFMEMORY, also for a text too long for a BSTR
[[nodiscard]] HRESULT ReturnText(std::wstring_view text, BSTR* target);
