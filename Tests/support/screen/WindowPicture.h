#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// Leaves a picture of a window, with everything inside it, as out/test/pages/NAME.png (below the folder that
/// VX_TEST_OUTPUT names; without that variable there is no picture). To be called on the window's thread,
/// with everything drawn. A failure is a failure of the test.
void SaveWindowPicture(HWND window, const std::string& name);

/// @return  the window's pixels, top-down, four bytes each
[[nodiscard]] std::vector<unsigned char> WindowPixels(HWND window);

/// Handles the calling thread's messages until there are none, so that everything is drawn.
void HandleMessages();
