#include "VxDSSource/pages/FittedPicture.h"

#include "BaseClasses/ModuleGlobals.h"

#include <utility>

namespace pages {

namespace {

/// A memory device context with a bitmap in it, for one scope.
class BitmapContext final {
public:
    BitmapContext(HDC like, HBITMAP bitmap)
        : m_dc(::CreateCompatibleDC(like)), m_previous(::SelectObject(m_dc, bitmap))
    {
    }
    ~BitmapContext()
    {
        ::SelectObject(m_dc, m_previous);
        ::DeleteDC(m_dc);
    }
    BitmapContext(const BitmapContext&) = delete;
    BitmapContext& operator=(const BitmapContext&) = delete;

    [[nodiscard]] HDC Get() const { return m_dc; }

private:
    HDC m_dc;
    HGDIOBJ m_previous; // borrowed: belongs to the system
};

/// @return  a bitmap of the size, for the screen; null without memory. The caller deletes it.
HBITMAP Scaled(HBITMAP original, SIZE size)
{
    BITMAP facts{};
    if (::GetObjectW(original, sizeof(facts), &facts) == 0)
        return nullptr;
    const HDC screen = ::GetDC(nullptr);
    const HBITMAP scaled = ::CreateCompatibleBitmap(screen, size.cx, size.cy);
    if (scaled != nullptr) {
        const BitmapContext from(screen, original);
        const BitmapContext to(screen, scaled);
        ::SetStretchBltMode(to.Get(), HALFTONE);
        ::SetBrushOrgEx(to.Get(), 0, 0, nullptr); // the mode wants it
        ::StretchBlt(to.Get(), 0, 0, size.cx, size.cy, from.Get(), 0, 0, facts.bmWidth, facts.bmHeight,
                     SRCCOPY);
    }
    ::ReleaseDC(nullptr, screen);
    return scaled;
}

HBITMAP SetImage(HWND control, HBITMAP bitmap)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): messages carry pointers as numbers
    return reinterpret_cast<HBITMAP>(
        ::SendMessageW(control, STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap)));
}

} // namespace

FittedPicture::~FittedPicture()
{
    if (m_fitted != nullptr)
        ::DeleteObject(m_fitted);
}

void FittedPicture::Show(HWND control, int bitmapId)
{
    RECT place{};
    ::GetClientRect(control, &place);
    const auto original = static_cast<HBITMAP>(
        ::LoadImageW(g_hInst, MAKEINTRESOURCEW(bitmapId), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    if (original == nullptr)
        return;
    const HBITMAP fitted = Scaled(original, {place.right, place.bottom});
    ::DeleteObject(original);
    if (fitted == nullptr)
        return;
    if (const HBITMAP before = SetImage(control, fitted))
        ::DeleteObject(before);
    if (const HBITMAP before = std::exchange(m_fitted, fitted))
        ::DeleteObject(before);
    m_control = control;
}

void FittedPicture::Remove()
{
    if (m_control == nullptr)
        return;
    const HBITMAP shown = SetImage(std::exchange(m_control, nullptr), nullptr);
    if (shown != m_fitted && shown != nullptr)
        ::DeleteObject(shown); // some systems show a copy, which becomes the caller's
    ::DeleteObject(std::exchange(m_fitted, nullptr));
}

} // namespace pages
