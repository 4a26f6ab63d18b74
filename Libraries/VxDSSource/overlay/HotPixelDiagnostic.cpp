#include "VxDSSource/overlay/HotPixelDiagnostic.h"

#include <windows.h>

#include <direct.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <string>
#include <tuple>

namespace vxds {

namespace {

constexpr double kLargestNormalDifference = 20.0; // fixed: grey levels
constexpr double kFlagged = 255.0;

/// The folder for the pictures, made if need be; empty when the current directory's name is too long.
std::string MakeFolder()
{
    // Narrow, as the picture library opens files: a directory whose name the system's code page cannot
    // express gets no pictures.
    std::array<char, MAX_PATH> directory{};
    const DWORD length = ::GetCurrentDirectoryA(static_cast<DWORD>(directory.size()), directory.data());
    if (length == 0 || length >= directory.size())
        return {};
    const std::string folder = std::string(directory.data(), length) + "\\HotPixelDiagnostic";
    std::ignore = ::_mkdir(folder.c_str()); // mostly it is there already
    return folder;
}

bool CanWrite(const std::string& path)
{
    const HANDLE file = ::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    ::CloseHandle(file);
    return true;
}

void WritePicture(const std::string& folder, const char* name, const cv::Mat& picture)
{
    if (folder.empty())
        return;
    // The picture library would complain on the program's error output, once for every frame.
    const std::string path = folder + name;
    if (CanWrite(path))
        std::ignore = cv::imwrite(path, picture); // the count matters more than the file
}

} // namespace

std::int32_t RunHotPixelDiagnostic(const cv::Mat& frame, std::int32_t kernelSize)
{
    const std::string folder = MakeFolder();

    cv::Mat grey;
    cv::cvtColor(frame, grey, cv::COLOR_BGR2GRAY);
    cv::Mat greyMedian;
    cv::medianBlur(grey, greyMedian, kernelSize);
    cv::Mat median;
    cv::medianBlur(frame, median, kernelSize);
    cv::Mat sideBySide;
    cv::hconcat(frame, median, sideBySide);
    WritePicture(folder, "\\compare_before_and_after.png", sideBySide);

    cv::Mat map;
    cv::absdiff(grey, greyMedian, map);
    cv::threshold(map, map, kLargestNormalDifference, kFlagged, cv::THRESH_BINARY);
    const std::int32_t count = cv::countNonZero(map);
    WritePicture(folder, "\\visual_map.png", map);
    return count;
}

} // namespace vxds
