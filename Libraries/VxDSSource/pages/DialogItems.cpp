#include "VxDSSource/pages/DialogItems.h"

#include <locale>
#include <sstream>

namespace pages {

std::wstring ItemText(HWND item, std::size_t longest)
{
    std::wstring text(longest + 1, L'\0'); // the system writes a terminator
    text.resize(static_cast<std::size_t>(
        ::GetWindowTextW(item, text.data(), static_cast<int>(text.size())))); // some hundreds
    return text;
}

std::int32_t NumberIn(const std::wstring& text, std::int32_t present)
{
    std::wistringstream in(text);
    in.imbue(std::locale::classic());     // no thousands' signs, whatever the host program has set
    in.exceptions(std::ios_base::badbit); // without memory the text is not empty: the exception goes on
    in >> present;
    return present;
}

void FillList(HWND list, const std::vector<std::wstring>& entries, std::optional<std::size_t> selected)
{
    ::SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const std::wstring& entry : entries)
        ::SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.c_str()));
    if (selected)
        ::SendMessageW(list, CB_SETCURSEL, *selected, 0);
}

std::optional<std::size_t> SelectedEntry(HWND list, std::size_t entryCount)
{
    const LRESULT selected = ::SendMessageW(list, CB_GETCURSEL, 0, 0);
    if (selected < 0 || static_cast<std::size_t>(selected) >= entryCount)
        return std::nullopt;
    return static_cast<std::size_t>(selected);
}

} // namespace pages
