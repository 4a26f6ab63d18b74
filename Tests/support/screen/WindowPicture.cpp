#include "support/screen/WindowPicture.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {

/// @return  empty when no pictures are wanted
std::filesystem::path PictureFolder()
{
    const char* const output = std::getenv("VX_TEST_OUTPUT");
    if (output == nullptr || *output == '\0')
        return {};
    // A path of the system that builds: Wine shows it as drive Z.
    const std::string text = *output == '/' ? "Z:" + std::string(output) : std::string(output);
    const auto folder = std::filesystem::path(text).make_preferred() / "pages";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    EXPECT_FALSE(error) << "cannot make " << folder;
    return folder;
}

/// @return  top-down, blue, green, red and an unused byte
cv::Mat PixelsOf(HWND window)
{
    RECT place{};
    ::GetWindowRect(window, &place);
    const int widthPx = place.right - place.left;
    const int heightPx = place.bottom - place.top;
    cv::Mat pixels(heightPx, widthPx, CV_8UC4, cv::Scalar::all(0));
    const HDC screen = ::GetWindowDC(window);
    const HDC memory = ::CreateCompatibleDC(screen);
    const HBITMAP bitmap = ::CreateCompatibleBitmap(screen, widthPx, heightPx);
    const HGDIOBJ before = ::SelectObject(memory, bitmap);
    EXPECT_TRUE(::BitBlt(memory, 0, 0, widthPx, heightPx, screen, 0, 0, SRCCOPY));
    ::SelectObject(memory, before);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), widthPx, -heightPx, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    EXPECT_EQ(::GetDIBits(memory, bitmap, 0, static_cast<UINT>(heightPx), pixels.data, &info, DIB_RGB_COLORS),
              heightPx);
    ::DeleteObject(bitmap);
    ::DeleteDC(memory);
    ::ReleaseDC(window, screen);
    return pixels;
}

} // namespace

void SaveWindowPicture(HWND window, const std::string& name)
{
    const auto folder = PictureFolder();
    if (folder.empty())
        return;
    cv::Mat picture;
    cv::cvtColor(PixelsOf(window), picture, cv::COLOR_BGRA2BGR);
    std::vector<unsigned char> bytes;
    ASSERT_TRUE(cv::imencode(".png", picture, bytes));
    std::ofstream file(folder / (name + ".png"), std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(file.good()) << name;
}

std::vector<unsigned char> WindowPixels(HWND window)
{
    const cv::Mat pixels = PixelsOf(window);
    return {pixels.datastart, pixels.dataend};
}

void HandleMessages()
{
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}
