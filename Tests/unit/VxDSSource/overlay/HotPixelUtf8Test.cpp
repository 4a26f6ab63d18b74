#include "VxDSSource/overlay/HotPixelDiagnostic.h"

#include "WorkingDirectory.h"

#include <opencv2/imgcodecs.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// 40 x 30 pixels, one of which stands out.
cv::Mat PictureWithADefect()
{
    cv::Mat picture(30, 40, CV_8UC3, cv::Scalar::all(100));
    picture.at<cv::Vec3b>(11, 17) = {200, 200, 200};
    return picture;
}

cv::Mat ReadPicture(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    return bytes.empty() ? cv::Mat() : cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
}

TEST(HotPixelUtf8Test, RunsWithUtf8AsItsCodePage)
{
    EXPECT_EQ(::GetACP(), static_cast<UINT>(CP_UTF8));
}

TEST(HotPixelUtf8Test, WritesIntoADirectoryThatNoOlderCodePageCanExpress)
{
    const TemporaryFolder folder(L"\u00E4\u0439 \u65E5\u672C-"); // of three scripts
    const WorkingDirectory current(folder.Path());

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(PictureWithADefect(), 3), 1);

    const cv::Mat map = ReadPicture(folder.Path() / L"HotPixelDiagnostic" / L"visual_map.png");
    ASSERT_EQ(map.size(), cv::Size(40, 30));
    EXPECT_EQ(map.at<std::uint8_t>(11, 17), 255);
    EXPECT_EQ(ReadPicture(folder.Path() / L"HotPixelDiagnostic" / L"compare_before_and_after.png").size(),
              cv::Size(80, 30));
}

TEST(HotPixelUtf8Test, CountsInADirectoryWhoseNameIsTooLongOnlyInBytes)
{
    const TemporaryFolder folder(L"long-");
    const fs::path deep = folder.Path() / std::wstring(65, L'\u65E5') / std::wstring(65, L'\u672C');
    fs::create_directories(deep);
    const WorkingDirectory current(deep);
    ASSERT_LT(::GetCurrentDirectoryW(0, nullptr), static_cast<DWORD>(MAX_PATH));
    ASSERT_GT(::GetCurrentDirectoryA(0, nullptr), static_cast<DWORD>(MAX_PATH));

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(PictureWithADefect(), 3), 1);

    EXPECT_TRUE(fs::is_empty(deep));
}

} // namespace
