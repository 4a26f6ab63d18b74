#include "VxDSSource/pages/FocusFrame.h"

#include <commctrl.h>

namespace pages {

namespace {

constexpr UINT_PTR kSubclassId = 1;

void DrawFrame(HWND control)
{
    const auto hidden = static_cast<UINT>(::SendMessageW(control, WM_QUERYUISTATE, 0, 0));
    if (::GetFocus() != control || (hidden & UISF_HIDEFOCUS) != 0)
        return;
    RECT place{};
    ::GetClientRect(control, &place);
    const HDC dc = ::GetDC(control);
    ::DrawFocusRect(dc, &place);
    ::ReleaseDC(control, dc);
}

LRESULT CALLBACK Procedure(HWND control, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR)
{
    const LRESULT result = ::DefSubclassProc(control, message, wParam, lParam);
    switch (message) {
    case WM_PAINT:
        DrawFrame(control);
        break;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
    case WM_UPDATEUISTATE:
        ::InvalidateRect(control, nullptr, TRUE);
        break;
    case WM_NCDESTROY:
        ::RemoveWindowSubclass(control, &Procedure, kSubclassId);
        break;
    default:
        break;
    }
    return result;
}

} // namespace

void DrawFocusAround(HWND control)
{
    ::SetWindowSubclass(control, &Procedure, kSubclassId, 0);
}

} // namespace pages
