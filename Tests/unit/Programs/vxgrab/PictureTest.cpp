#include "vxgrab/Picture.h"

#include <gmock/gmock.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <dshow.h>

#include <array>
#include <fstream>
#include <iterator>
#include <vector>

namespace vxgrab {
namespace {

constexpr auto B = [](int value) { return static_cast<std::byte>(value); };

/// A PNG file that is gone after the test.
class PngFile {
public:
    explicit PngFile(const wchar_t* name) : m_path(std::filesystem::temp_directory_path() / name) {}
    ~PngFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

    [[nodiscard]] cv::Mat Read() const
    {
        std::ifstream file(m_path, std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
        return content.empty() ? cv::Mat() : cv::imdecode(content, cv::IMREAD_UNCHANGED);
    }

private:
    const std::filesystem::path m_path;
};

FrameFormat Format(const GUID& subtype, std::size_t bytesPerPixel, int widthPx, int heightPx, bool isBottomUp)
{
    return {subtype, widthPx, heightPx, isBottomUp, bytesPerPixel};
}

cv::Vec3b PixelAt(const cv::Mat& picture, int row, int column)
{
    return picture.at<cv::Vec3b>(row, column);
}

// Two rows of one pixel as a bottom-up bitmap has them: the lower row, red, comes first.
constexpr std::array kRedBelowBlue{B(0), B(0), B(255), /* next row */ B(255), B(0), B(0)};

TEST(WritePngTest, TurnsBottomUpRgb24Upright)
{
    const PngFile file(L"vxgrab-rgb24.png");
    ASSERT_TRUE(WritePng(Format(MEDIASUBTYPE_RGB24, 3, 1, 2, true), kRedBelowBlue, file.Path()).IsOK());

    const cv::Mat picture = file.Read();
    ASSERT_EQ(picture.size(), cv::Size(1, 2));
    ASSERT_EQ(picture.type(), CV_8UC3);
    EXPECT_EQ(PixelAt(picture, 0, 0), cv::Vec3b(255, 0, 0)); // blue; OpenCV's order is blue, green, red
    EXPECT_EQ(PixelAt(picture, 1, 0), cv::Vec3b(0, 0, 255));
}

TEST(WritePngTest, LeavesTopDownRgb24AsItIs)
{
    const PngFile file(L"vxgrab-topdown.png");
    ASSERT_TRUE(WritePng(Format(MEDIASUBTYPE_RGB24, 3, 1, 2, false), kRedBelowBlue, file.Path()).IsOK());

    EXPECT_EQ(PixelAt(file.Read(), 0, 0), cv::Vec3b(0, 0, 255));
}

TEST(WritePngTest, SkipsThePaddingOfRows)
{
    const PngFile file(L"vxgrab-padded.png");
    constexpr std::array padded{B(0), B(0), B(255), B(99), B(255), B(0), B(0), B(99)};
    ASSERT_TRUE(WritePng(Format(MEDIASUBTYPE_RGB24, 3, 1, 2, true), padded, file.Path()).IsOK());

    EXPECT_EQ(PixelAt(file.Read(), 0, 0), cv::Vec3b(255, 0, 0));
    EXPECT_EQ(PixelAt(file.Read(), 1, 0), cv::Vec3b(0, 0, 255));
}

TEST(WritePngTest, DropsTheFourthByteOfRgb32)
{
    const PngFile file(L"vxgrab-rgb32.png");
    constexpr std::array pixel{B(10), B(20), B(30), B(0)};
    ASSERT_TRUE(WritePng(Format(MEDIASUBTYPE_RGB32, 4, 1, 1, true), pixel, file.Path()).IsOK());

    const cv::Mat picture = file.Read();
    ASSERT_EQ(picture.type(), CV_8UC3);
    EXPECT_EQ(PixelAt(picture, 0, 0), cv::Vec3b(10, 20, 30));
}

TEST(WritePngTest, ConvertsYuy2ByVideoRange)
{
    const PngFile file(L"vxgrab-yuy2.png");
    // Luminance 235 is white and 16 black by BT.601; 128 means no colour.
    constexpr std::array pixels{B(235), B(128), B(16), B(128)};
    ASSERT_TRUE(WritePng(Format(MEDIASUBTYPE_YUY2, 2, 2, 1, false), pixels, file.Path()).IsOK());

    const cv::Mat picture = file.Read();
    ASSERT_EQ(picture.size(), cv::Size(2, 1));
    EXPECT_EQ(PixelAt(picture, 0, 0), cv::Vec3b(255, 255, 255));
    EXPECT_EQ(PixelAt(picture, 0, 1), cv::Vec3b(0, 0, 0));
}

TEST(WritePngTest, WritesFileNamesOfEveryScript)
{
    const PngFile file(L"\u043a\u0430\u0434\u0440-\u5199\u771f.png");
    ASSERT_TRUE(WritePng(Format(MEDIASUBTYPE_RGB24, 3, 1, 2, true), kRedBelowBlue, file.Path()).IsOK());

    EXPECT_FALSE(file.Read().empty());
}

TEST(WritePngTest, RefusesFramesThatAreTooShort)
{
    const PngFile file(L"vxgrab-short.png");
    const auto frame = std::span(kRedBelowBlue).first(5);

    EXPECT_EQ(WritePng(Format(MEDIASUBTYPE_RGB24, 3, 1, 2, true), frame, file.Path()).Code(),
              VxError::Truncated);
    EXPECT_TRUE(file.Read().empty());
}

TEST(WritePngTest, RefusesSubtypesItCannotRead)
{
    const PngFile file(L"vxgrab-mjpg.png");
    const VxResult result = WritePng(Format(MEDIASUBTYPE_MJPG, 0, 1, 2, true), kRedBelowBlue, file.Path());

    EXPECT_EQ(result.Code(), VxError::NotSupported);
    EXPECT_THAT(result.GetDescription().Narrow(), testing::HasSubstr("MJPG"));
}

TEST(WritePngTest, NamesTheFileThatCannotBeWritten)
{
    const VxResult result =
        WritePng(Format(MEDIASUBTYPE_RGB24, 3, 1, 2, true), kRedBelowBlue, L"no such folder/picture.png");

    EXPECT_THAT(result.GetDescription().Narrow(), testing::HasSubstr("no such folder/picture.png"));
}

} // namespace
} // namespace vxgrab
