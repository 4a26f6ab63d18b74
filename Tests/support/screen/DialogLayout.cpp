#include "support/screen/DialogLayout.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

struct Control {
    HWND window;
    std::wstring kind;
    std::wstring text;
    RECT place; // within the dialog
    LONG_PTR style;

    [[nodiscard]] bool IsGroupBox() const
    {
        return kind == L"Button" && (style & BS_TYPEMASK) == BS_GROUPBOX;
    }
    [[nodiscard]] bool IsLabel() const { return kind == L"Static" && (style & SS_TYPEMASK) == SS_LEFT; }
    [[nodiscard]] bool IsField() const { return kind == L"Edit" || kind == L"ComboBox"; }
    [[nodiscard]] std::string Name() const
    {
        const std::string number = std::to_string(::GetDlgCtrlID(window));
        return number + " \"" + std::string(text.begin(), text.end()) + "\"";
    }
};

BOOL CALLBACK Collect(HWND window, LPARAM list)
{
    auto& controls = *reinterpret_cast<std::vector<Control>*>(list);
    const HWND dialog = ::GetAncestor(window, GA_PARENT);
    std::array<wchar_t, 256> text{};
    Control control{window, {}, {}, {}, ::GetWindowLongPtrW(window, GWL_STYLE)};
    ::GetClassNameW(window, text.data(), 256);
    control.kind = text.data();
    ::GetWindowTextW(window, text.data(), 256);
    control.text = text.data();
    ::GetWindowRect(window, &control.place);
    ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.place), 2);
    // Children of children are a control's own business.
    if (controls.empty() || ::GetAncestor(controls.front().window, GA_PARENT) == dialog)
        controls.push_back(std::move(control));
    return TRUE;
}

bool Contains(const RECT& outer, const RECT& inner)
{
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

bool Overlaps(const RECT& a, const RECT& b)
{
    RECT both{};
    return ::IntersectRect(&both, &a, &b) != FALSE;
}

/// @return  what the control's picture takes beside its text
int Frame(const Control& control)
{
    constexpr int kMarkAndGap = 4; // chosen: the gap between a mark and its text
    if (control.kind == L"Static")
        return 0;
    if (control.kind == L"Edit")
        return 2 * ::GetSystemMetrics(SM_CXEDGE) + 2; // its two margins of a pixel
    if (control.kind == L"ComboBox")
        return 2 * ::GetSystemMetrics(SM_CXEDGE) + ::GetSystemMetrics(SM_CXVSCROLL) + 2;
    switch (control.style & BS_TYPEMASK) {
    case BS_AUTORADIOBUTTON:
    case BS_AUTOCHECKBOX:
        return ::GetSystemMetrics(SM_CXMENUCHECK) + kMarkAndGap;
    default:
        return 2 * ::GetSystemMetrics(SM_CXEDGE);
    }
}

/// Size of the control's text in its font; the width is that which it has in one line, or the height that
/// which it takes when it is broken into the control's width.
SIZE TextSize(const Control& control, UINT format)
{
    const HDC dc = ::GetDC(control.window);
    const auto font = reinterpret_cast<HFONT>(::SendMessageW(control.window, WM_GETFONT, 0, 0));
    const HGDIOBJ before = font != nullptr ? ::SelectObject(dc, font) : nullptr;
    RECT need = {0, 0, control.place.right - control.place.left - Frame(control), 0};
    ::DrawTextW(dc, control.text.c_str(), -1, &need, DT_CALCRECT | format);
    if (before != nullptr)
        ::SelectObject(dc, before);
    ::ReleaseDC(control.window, dc);
    return {need.right, need.bottom};
}

void CheckText(const Control& control, std::vector<std::string>& defects)
{
    const int widthPx = control.place.right - control.place.left;
    const int heightPx = control.place.bottom - control.place.top;
    if (control.text.empty() || control.kind == L"SysTreeView32")
        return;
    const bool isBroken =
        control.kind == L"Static" || (control.kind == L"Edit" && (control.style & ES_MULTILINE) != 0);
    const UINT format = isBroken ? DT_WORDBREAK | DT_EDITCONTROL : DT_SINGLELINE;
    const SIZE need = TextSize(control, control.kind == L"Edit" ? format | DT_NOPREFIX : format);
    if (need.cx + Frame(control) > widthPx)
        defects.push_back(control.Name() + ": text is " + std::to_string(need.cx + Frame(control)) +
                          " pixels wide, the control " + std::to_string(widthPx));
    if (!control.IsGroupBox() && need.cy > heightPx)
        defects.push_back(control.Name() + ": text is " + std::to_string(need.cy) +
                          " pixels high, the control " + std::to_string(heightPx));
}

void CheckPair(const Control& a, const Control& b, std::vector<std::string>& defects)
{
    if (!Overlaps(a.place, b.place))
        return;
    if (!a.IsGroupBox() && !b.IsGroupBox()) {
        defects.push_back(a.Name() + " and " + b.Name() + " overlap");
        return;
    }
    const bool isInside = a.IsGroupBox() ? Contains(a.place, b.place) : Contains(b.place, a.place);
    if (!isInside || (a.IsGroupBox() && b.IsGroupBox()))
        defects.push_back(a.Name() + " and " + b.Name() + ": one reaches beyond the other");
}

/// A label and the field behind it: the middles of both are level.
void CheckRow(const Control& label, const Control& field, std::vector<std::string>& defects)
{
    if (!label.IsLabel() || !field.IsField() || field.place.left < label.place.right ||
        (field.style & ES_MULTILINE) != 0)
        return;
    const int difference =
        (label.place.top + label.place.bottom) / 2 - (field.place.top + field.place.bottom) / 2;
    constexpr int kSeen = 3; // chosen: pixels that people see
    if (std::abs(difference) > kSeen)
        defects.push_back(label.Name() + " and " + field.Name() + " differ by " + std::to_string(difference) +
                          " pixels in height");
}

} // namespace

std::vector<std::string> LayoutDefects(HWND dialog)
{
    std::vector<Control> controls;
    ::EnumChildWindows(dialog, &Collect, reinterpret_cast<LPARAM>(&controls));
    std::vector<std::string> defects;
    RECT whole{};
    ::GetClientRect(dialog, &whole);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        CheckText(controls[i], defects);
        if (!Contains(whole, controls[i].place))
            defects.push_back(controls[i].Name() + " reaches beyond the page");
        for (std::size_t k = i + 1; k < controls.size(); ++k)
            CheckPair(controls[i], controls[k], defects);
        if (i + 1 < controls.size())
            CheckRow(controls[i], controls[i + 1], defects);
    }
    if (controls.empty())
        defects.push_back("there is no control");
    return defects;
}
