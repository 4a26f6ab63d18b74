#include "VxDSSource/overlay/HotPixelDiagnostic.h"

#include "WorkingDirectory.h"

#include <opencv2/imgcodecs.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <tuple>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr const wchar_t* kFolder = L"HotPixelDiagnostic";
constexpr const wchar_t* kComparison = L"compare_before_and_after.png";
constexpr const wchar_t* kMap = L"visual_map.png";

/// Reads a picture from a path of any characters.
cv::Mat ReadPicture(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    return bytes.empty() ? cv::Mat() : cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
}

/// A grey picture.
cv::Mat Flat(int width, int height, int channels, int level)
{
    return {height, width, CV_8UC(channels), cv::Scalar::all(level)};
}

void SetGrey(cv::Mat& picture, int x, int y, std::uint8_t level)
{
    std::fill_n(picture.ptr(y, x), picture.channels(), level);
}

std::uint32_t Next(std::uint32_t& state)
{
    state = state * 1664525 + 1013904223;
    return state >> 16;
}

// --- The slow way, from the definition: grey level by the published weights, median of a neighbourhood whose
// missing part repeats the edge.

int GreyOf(const cv::Mat& picture, int x, int y)
{
    const std::uint8_t* const pixel = picture.ptr(y, x);
    return static_cast<int>(std::lround(0.114 * pixel[0] + 0.587 * pixel[1] + 0.299 * pixel[2]));
}

int MedianAround(const cv::Mat& picture, int x, int y, int kernelSize)
{
    std::vector<int> levels;
    const int reach = kernelSize / 2;
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            levels.push_back(GreyOf(picture, std::clamp(x + dx, 0, picture.cols - 1),
                                    std::clamp(y + dy, 0, picture.rows - 1)));
    std::ranges::sort(levels);
    return levels[levels.size() / 2];
}

cv::Mat SlowMap(const cv::Mat& picture, int kernelSize)
{
    cv::Mat map(picture.size(), CV_8UC1);
    for (int y = 0; y < picture.rows; ++y)
        for (int x = 0; x < picture.cols; ++x)
            map.at<std::uint8_t>(y, x) =
                std::abs(GreyOf(picture, x, y) - MedianAround(picture, x, y, kernelSize)) > 20 ? 255 : 0;
    return map;
}

int CountWhite(const cv::Mat& map)
{
    return static_cast<int>(std::count(map.begin<std::uint8_t>(), map.end<std::uint8_t>(), 255));
}

bool AreEqual(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
}

class HotPixelDiagnosticTest : public testing::Test {
protected:
    [[nodiscard]] cv::Mat Map() const { return ReadPicture(m_folder.Path() / kFolder / kMap); }
    [[nodiscard]] cv::Mat Comparison() const { return ReadPicture(m_folder.Path() / kFolder / kComparison); }

    TemporaryFolder m_folder{L"hot-pixels-"};
    WorkingDirectory m_current{m_folder.Path()};
};

TEST_F(HotPixelDiagnosticTest, FindsNothingInAUniformFrame)
{
    EXPECT_EQ(vxds::RunHotPixelDiagnostic(Flat(40, 30, 3, 100), 3), 0);

    EXPECT_TRUE(AreEqual(Map(), Flat(40, 30, 1, 0)));
}

TEST_F(HotPixelDiagnosticTest, CountsAPixelThatIsMoreThan20LevelsFromItsSurroundings)
{
    for (const int kernelSize : {3, 5}) {
        for (const int level : {0, 79, 80, 100, 120, 121, 255}) {
            cv::Mat frame = Flat(40, 30, 3, 100);
            SetGrey(frame, 17, 11, static_cast<std::uint8_t>(level));
            const bool isCounted = std::abs(level - 100) > 20;

            EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, kernelSize), isCounted ? 1 : 0) << level;

            cv::Mat expected = Flat(40, 30, 1, 0);
            expected.at<std::uint8_t>(11, 17) = isCounted ? 255 : 0;
            EXPECT_TRUE(AreEqual(Map(), expected)) << level;
        }
    }
}

TEST_F(HotPixelDiagnosticTest, CountsKnownDefectsAsTheDefinitionDoes)
{
    for (const int channels : {3, 4}) {
        for (const int kernelSize : {3, 5}) {
            // A soft gradient with defects at chance places, some side by side, some at the edges.
            cv::Mat frame(37, 53, CV_8UC(channels), cv::Scalar::all(255));
            for (int y = 0; y < frame.rows; ++y)
                for (int x = 0; x < frame.cols; ++x)
                    for (int c = 0; c < 3; ++c)
                        frame.ptr(y, x)[c] = static_cast<std::uint8_t>(60 + x + y + 10 * c);
            std::uint32_t chance = 7;
            for (int i = 0; i < 60; ++i) {
                const int x = static_cast<int>(Next(chance) % 53);
                const int y = static_cast<int>(Next(chance) % 37);
                for (int c = 0; c < 3; ++c)
                    frame.ptr(y, x)[c] = static_cast<std::uint8_t>(Next(chance));
            }
            const cv::Mat expected = SlowMap(frame, kernelSize);
            ASSERT_GT(CountWhite(expected), 20);

            EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, kernelSize), CountWhite(expected));
            EXPECT_TRUE(AreEqual(Map(), expected));
        }
    }
}

// Of greys: their brightness needs no rounding, so each difference is exact.
TEST_F(HotPixelDiagnosticTest, CountsAsTheDefinitionDoesInPicturesOfAnySize)
{
    std::uint32_t chance = 1;
    int total = 0;
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(9, 1), cv::Size(2, 2),
                                cv::Size(3, 3), cv::Size(5, 4), cv::Size(64, 48), cv::Size(129, 67)}) {
        for (const int channels : {3, 4}) {
            for (const int kernelSize : {3, 5}) {
                cv::Mat frame(size, CV_8UC(channels));
                for (int y = 0; y < frame.rows; ++y)
                    for (int x = 0; x < frame.cols; ++x)
                        SetGrey(frame, x, y, static_cast<std::uint8_t>(Next(chance)));
                const cv::Mat expected = SlowMap(frame, kernelSize);

                EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, kernelSize), CountWhite(expected)) << size;
                EXPECT_TRUE(AreEqual(Map(), expected)) << size;
                total += CountWhite(expected);
            }
        }
    }
    EXPECT_GT(total, 10000);
}

TEST_F(HotPixelDiagnosticTest, CountsByBrightnessNotByColour)
{
    struct Defect {
        cv::Vec3b colour;
        int count;
    };
    // Blue has 0.114 of the brightness, green 0.587, red 0.299.
    for (const Defect& defect : {Defect{{175, 0, 0}, 0}, Defect{{190, 0, 0}, 1}, Defect{{0, 34, 0}, 0},
                                 Defect{{0, 37, 0}, 1}, Defect{{0, 0, 67}, 0}, Defect{{0, 0, 71}, 1}}) {
        cv::Mat frame = Flat(40, 30, 3, 0);
        frame.at<cv::Vec3b>(11, 17) = defect.colour;

        EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), defect.count) << defect.colour;
    }
}

TEST_F(HotPixelDiagnosticTest, WritesTheFrameBesideItsMedian)
{
    for (const int channels : {3, 4}) {
        cv::Mat frame = Flat(40, 30, channels, 100);
        SetGrey(frame, 17, 11, 200);
        const cv::Mat before = frame.clone();

        EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), 1);

        const cv::Mat picture = Comparison();
        ASSERT_EQ(picture.size(), cv::Size(80, 30));
        ASSERT_EQ(picture.channels(), channels);
        EXPECT_TRUE(AreEqual(picture.colRange(0, 40), before));
        EXPECT_TRUE(AreEqual(picture.colRange(40, 80), Flat(40, 30, channels, 100)));
        EXPECT_TRUE(AreEqual(frame, before)) << "the frame is only looked at";
    }
}

TEST_F(HotPixelDiagnosticTest, LooksAtAPartOfALargerPicture)
{
    cv::Mat large = Flat(50, 30, 3, 100);
    SetGrey(large, 45, 11, 255); // outside
    SetGrey(large, 17, 11, 255);

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(large.colRange(0, 40), 3), 1);
}

TEST_F(HotPixelDiagnosticTest, WritesBothFilesAnewEachTime)
{
    cv::Mat frame = Flat(40, 30, 3, 100);
    SetGrey(frame, 17, 11, 255);
    EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), 1);

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(Flat(8, 6, 3, 50), 3), 0);

    EXPECT_TRUE(AreEqual(Map(), Flat(8, 6, 1, 0)));
    EXPECT_TRUE(AreEqual(Comparison(), Flat(16, 6, 3, 50)));
}

TEST_F(HotPixelDiagnosticTest, LeavesAnInvalidKernelToThePictureLibrary)
{
    EXPECT_THROW(std::ignore = vxds::RunHotPixelDiagnostic(Flat(8, 6, 3, 50), 4), cv::Exception);
}

// --- Where it cannot write.

TEST_F(HotPixelDiagnosticTest, CountsInADirectoryThatIsReadOnly)
{
    // Below Wine's drive Z: lies a system folder in which nobody can make anything, whoever runs the test.
    const WorkingDirectory current(L"Z:\\proc");
    cv::Mat frame = Flat(40, 30, 3, 100);
    SetGrey(frame, 17, 11, 200);
    testing::internal::CaptureStderr();

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), 1);

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(fs::exists(kFolder));
}

TEST_F(HotPixelDiagnosticTest, CountsWhereAFileHasTheFoldersName)
{
    std::ofstream(fs::path(kFolder)) << "a file";
    cv::Mat frame = Flat(40, 30, 3, 100);
    SetGrey(frame, 17, 11, 200);

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), 1);

    EXPECT_EQ(fs::file_size(kFolder), 6u);
    EXPECT_FALSE(fs::exists(kMap));
}

TEST_F(HotPixelDiagnosticTest, CountsWhereAFolderHasAFilesName)
{
    fs::create_directories(fs::path(kFolder) / kMap);
    fs::create_directories(fs::path(kFolder) / kComparison);
    cv::Mat frame = Flat(40, 30, 3, 100);
    SetGrey(frame, 17, 11, 200);
    testing::internal::CaptureStderr();

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), 1);

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(HotPixelDiagnosticTest, CountsInADirectoryWhoseNameIsAlmostAsLongAsNamesGet)
{
    // The names of folder and file add 48 characters; a whole path has 259 at most.
    constexpr std::size_t kLongestWithRoom = 259 - 48;
    cv::Mat frame = Flat(40, 30, 3, 100);
    SetGrey(frame, 17, 11, 200);
    for (const std::size_t length : {kLongestWithRoom - 1, kLongestWithRoom, kLongestWithRoom + 1,
                                     std::size_t{230}, std::size_t{247}, std::size_t{257}}) {
        const std::size_t present = m_folder.Path().native().size() + 1; // with the separator
        ASSERT_LT(present, length);
        const fs::path folder = m_folder.Path() / std::wstring(length - present, L'n');
        fs::create_directories(folder);
        const WorkingDirectory current(folder);
        ASSERT_EQ(::GetCurrentDirectoryW(0, nullptr), length + 1);
        testing::internal::CaptureStderr();

        EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), 1) << length;

        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << length;
        if (length <= kLongestWithRoom) {
            EXPECT_FALSE(ReadPicture(folder / kFolder / kMap).empty()) << length;
            EXPECT_FALSE(ReadPicture(folder / kFolder / kComparison).empty()) << length;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(folder))
            EXPECT_EQ(entry.path().filename(), kFolder) << "no name is cut off";
    }
}

TEST_F(HotPixelDiagnosticTest, WritesIntoADirectoryThatTheCodePageCanExpress)
{
    const TemporaryFolder folder(L"\u00E4\u00F6\u00FC \u00DF-");
    const WorkingDirectory current(folder.Path());
    ASSERT_EQ(::GetACP(), 1252u) << "else the name cannot be expressed";

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(Flat(8, 6, 3, 50), 3), 0);

    EXPECT_TRUE(AreEqual(ReadPicture(folder.Path() / kFolder / kMap), Flat(8, 6, 1, 0)));
    EXPECT_TRUE(AreEqual(ReadPicture(folder.Path() / kFolder / kComparison), Flat(16, 6, 3, 50)));
}

TEST_F(HotPixelDiagnosticTest, CountsInADirectoryThatTheCodePageCannotExpress)
{
    const TemporaryFolder folder(L"\u4E2D\u6587-");
    const WorkingDirectory current(folder.Path());
    cv::Mat frame = Flat(40, 30, 3, 100);
    SetGrey(frame, 17, 11, 200);

    EXPECT_EQ(vxds::RunHotPixelDiagnostic(frame, 3), 1);

    EXPECT_TRUE(fs::is_empty(folder.Path()));
}

} // namespace
