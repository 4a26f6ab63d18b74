#pragma once

#include <windows.h>

namespace pages {

/// A bitmap of the module, scaled to the control that shows it: controls scale, too, but drop rows and
/// columns.
///
/// Owner:  AboutPage, by value.
/// Thread: the window thread.
class FittedPicture final {
public:
    FittedPicture() = default;
    ~FittedPicture();
    FittedPicture(const FittedPicture&) = delete;
    FittedPicture& operator=(const FittedPicture&) = delete;

    /// Shows it. Where the system has no memory for it the control keeps what it shows.
    /// @param control  shows it until its end or Remove, whichever comes first
    void Show(HWND control, int bitmapId);

    /// Takes the picture from the control, which still exists.
    void Remove();

private:
    HWND m_control = nullptr; // null: nothing is shown
    HBITMAP m_fitted = nullptr;
};

} // namespace pages
