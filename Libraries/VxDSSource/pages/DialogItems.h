#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Reading and writing the controls of a dialog.

namespace pages {

/// @param longest  characters that are read at most
[[nodiscard]] std::wstring ItemText(HWND item, std::size_t longest);

/// @return  the number a text begins with, as a stream reads it: 0 where it begins with none, the nearest
///          limit where it is too large, and the present one for an empty text
[[nodiscard]] std::int32_t NumberIn(const std::wstring& text, std::int32_t present);

/// Fills a combo box and selects an entry, or none.
void FillList(HWND list, const std::vector<std::wstring>& entries, std::optional<std::size_t> selected);

/// @return  index of the selected entry; nothing when none is, or when there are not so many
[[nodiscard]] std::optional<std::size_t> SelectedEntry(HWND list, std::size_t entryCount);

} // namespace pages
