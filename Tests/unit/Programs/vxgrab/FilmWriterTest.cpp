#include "vxgrab/FilmWriter.h"

#include <gmock/gmock.h>

#include <dshow.h>
#include <vfw.h>

#include <array>
#include <string>

namespace vxgrab {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr auto B = [](int value) { return static_cast<std::byte>(value); };
const FrameFormat kTwoPixels{MEDIASUBTYPE_RGB24, 2, 1, true, 3};

FrameTally::TimePoint At(std::chrono::milliseconds time)
{
    return FrameTally::TimePoint(time);
}

std::array<std::byte, 6> FrameOf(int value)
{
    return {B(value), B(value), B(value), B(value), B(value), B(value)};
}

std::vector<std::byte> FirstOf(const std::array<std::byte, 6>& frame, std::size_t bytes)
{
    return {frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(bytes)};
}

/// A folder that is gone after the test.
class FilmFolder {
public:
    FilmFolder() { std::filesystem::create_directories(m_path); }
    ~FilmFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    FilmFolder(const FilmFolder&) = delete;
    FilmFolder& operator=(const FilmFolder&) = delete;

    [[nodiscard]] std::filesystem::path File(const wchar_t* name) const { return m_path / name; }

private:
    const std::filesystem::path m_path =
        std::filesystem::temp_directory_path() / (L"vxgrab-film-" + std::to_wstring(::GetCurrentProcessId()));
};

/// Reads a film with the system's own reader.
class SystemFilm {
public:
    explicit SystemFilm(const std::filesystem::path& file)
    {
        ::AVIFileInit();
        EXPECT_EQ(::AVIFileOpenW(&m_file, file.c_str(), OF_READ, nullptr), 0) << file;
        if (m_file != nullptr) {
            EXPECT_EQ(::AVIFileGetStream(m_file, &m_stream, streamtypeVIDEO, 0), 0);
        }
        if (m_stream != nullptr) {
            EXPECT_EQ(::AVIStreamInfoW(m_stream, &info, sizeof(info)), 0);
        }
    }
    ~SystemFilm()
    {
        if (m_stream != nullptr)
            ::AVIStreamRelease(m_stream);
        if (m_file != nullptr)
            ::AVIFileRelease(m_file);
        ::AVIFileExit();
    }
    SystemFilm(const SystemFilm&) = delete;
    SystemFilm& operator=(const SystemFilm&) = delete;

    [[nodiscard]] std::vector<std::byte> Frame(LONG number) const
    {
        std::array<std::byte, 64> bytes{};
        LONG length = 0;
        EXPECT_EQ(::AVIStreamRead(m_stream, number, 1, bytes.data(), bytes.size(), &length, nullptr), 0);
        return {bytes.begin(), bytes.begin() + length};
    }

    AVISTREAMINFOW info{};

private:
    PAVIFILE m_file = nullptr;
    PAVISTREAM m_stream = nullptr;
};

TEST(FilmWriterTest, TheSystemsReaderFindsEveryFrameAndTheMeasuredRate)
{
    const FilmFolder folder;
    const auto file = folder.File(L"rate.avi");
    FilmWriter film(file);

    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(film.Add(kTwoPixels, FrameOf(10 + i), At(i * 40ms)).IsOK());
    ASSERT_TRUE(film.Finish().IsOK());

    EXPECT_THAT(film.Files(), ElementsAre(file));
    const SystemFilm read(file);
    EXPECT_EQ(read.info.dwLength, 5u);
    EXPECT_DOUBLE_EQ(static_cast<double>(read.info.dwRate) / read.info.dwScale, 25.0);
    for (int i = 0; i < 5; ++i)
        EXPECT_THAT(read.Frame(i), ElementsAre(B(10 + i), B(10 + i), B(10 + i), B(10 + i), B(10 + i),
                                               B(10 + i), B(0), B(0)));
}

TEST(FilmWriterTest, WritesFileNamesOfEveryScript)
{
    const FilmFolder folder;
    const auto file = folder.File(L"\u0444\u0438\u043b\u044c\u043c.avi");
    FilmWriter film(file);
    ASSERT_TRUE(film.Add(kTwoPixels, FrameOf(1), At(0ms)).IsOK());
    ASSERT_TRUE(film.Finish().IsOK());

    EXPECT_EQ(std::filesystem::file_size(file), 224u + (8 + 8) + (8 + 16));
}

TEST(FilmWriterTest, NeverCalledItMakesNoFile)
{
    const FilmFolder folder;
    FilmWriter film(folder.File(L"none.avi"));

    EXPECT_TRUE(film.Finish().IsOK());
    EXPECT_TRUE(film.Files().empty());
    EXPECT_FALSE(std::filesystem::exists(folder.File(L"none.avi")));
}

TEST(FilmWriterTest, ReplacesALongerFile)
{
    const FilmFolder folder;
    const auto file = folder.File(L"again.avi");
    for (const int frames : {10, 1}) {
        FilmWriter film(file);
        for (int i = 0; i < frames; ++i)
            ASSERT_TRUE(film.Add(kTwoPixels, FrameOf(i), At(i * 40ms)).IsOK());
        ASSERT_TRUE(film.Finish().IsOK());
    }

    EXPECT_EQ(std::filesystem::file_size(file), 224u + (8 + 8) + (8 + 16));
    EXPECT_EQ(SystemFilm(file).info.dwLength, 1u);
}

TEST(FilmWriterTest, GoesOnInAnotherFileBeforeOneGetsTooLarge)
{
    const FilmFolder folder;
    // Header, two frames of 8 bytes in chunks, and their index.
    constexpr std::uint64_t kTwoFrames = 224 + 2 * (8 + 8) + 8 + 2 * 16;
    FilmWriter film(folder.File(L"long.avi"), kTwoFrames);

    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(film.Add(kTwoPixels, FrameOf(i), At(i * 40ms)).IsOK());
    ASSERT_TRUE(film.Finish().IsOK());

    EXPECT_THAT(film.Files(), ElementsAre(folder.File(L"long.avi"), folder.File(L"long-000002.avi"),
                                          folder.File(L"long-000003.avi")));
    EXPECT_EQ(std::filesystem::file_size(film.Files()[0]), kTwoFrames);
    EXPECT_EQ(SystemFilm(film.Files()[1]).Frame(1)[0], B(3));
    EXPECT_EQ(SystemFilm(film.Files()[2]).info.dwLength, 1u);
}

TEST(FilmWriterTest, APictureOfAnotherSizeStartsAnotherFile)
{
    const FilmFolder folder;
    const FrameFormat onePixel{MEDIASUBTYPE_RGB24, 1, 1, true, 3};
    FilmWriter film(folder.File(L"sizes.avi"));

    ASSERT_TRUE(film.Add(kTwoPixels, FrameOf(1), At(0ms)).IsOK());
    ASSERT_TRUE(film.Add(onePixel, FirstOf(FrameOf(2), 3), At(40ms)).IsOK());
    ASSERT_TRUE(film.Finish().IsOK());

    ASSERT_EQ(film.Files().size(), 2u);
    EXPECT_EQ(SystemFilm(film.Files()[1]).info.rcFrame.right, 1);
}

TEST(FilmWriterTest, LeavesOutFramesThatAreTooShort)
{
    const FilmFolder folder;
    FilmWriter film(folder.File(L"short.avi"));

    EXPECT_TRUE(film.Add(kTwoPixels, FirstOf(FrameOf(1), 5), At(0ms)).IsOK());
    EXPECT_TRUE(film.Files().empty());
}

TEST(FilmWriterTest, SaysOnceThatTheFileCannotBeWritten)
{
    FilmWriter film(L"no such folder/film.avi");

    EXPECT_THAT(film.Add(kTwoPixels, FrameOf(1), At(0ms)).GetDescription().Narrow(),
                testing::HasSubstr("no such folder/film.avi"));
    EXPECT_TRUE(film.Add(kTwoPixels, FrameOf(1), At(0ms)).IsOK());
    EXPECT_TRUE(film.Files().empty());
}

} // namespace
} // namespace vxgrab
