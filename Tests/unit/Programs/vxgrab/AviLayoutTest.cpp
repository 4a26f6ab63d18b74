#include "vxgrab/AviLayout.h"

#include <gtest/gtest.h>

#include <dshow.h>

#include <string>

namespace vxgrab {
namespace {

constexpr auto B = [](int value) { return static_cast<std::byte>(value); };

std::uint32_t U32At(std::span<const std::byte> bytes, std::size_t offset)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
    return value;
}

std::string CodeAt(std::span<const std::byte> bytes, std::size_t offset)
{
    std::string code;
    for (std::size_t i = 0; i < 4; ++i)
        code.push_back(static_cast<char>(bytes[offset + i]));
    return code;
}

const FrameFormat kRgb24{MEDIASUBTYPE_RGB24, 5, 2, true, 3};
const FrameFormat kYuy2{MEDIASUBTYPE_YUY2, 6, 2, false, 2};

TEST(AviLayoutTest, RowsAreWholeWords)
{
    EXPECT_EQ(FilmRowBytes(kRgb24), 16u); // 15 and one of padding
    EXPECT_EQ(FilmFrameBytes(kRgb24), 32u);
    EXPECT_EQ(FilmRowBytes(kYuy2), 12u);
}

TEST(AviLayoutTest, HeaderHasItsListsWhereTheFormatWantsThem)
{
    const auto header = AviHeader(kRgb24, {3, 40000});

    ASSERT_EQ(header.size(), 224u);
    EXPECT_EQ(CodeAt(header, 0), "RIFF");
    EXPECT_EQ(CodeAt(header, 8), "AVI ");
    EXPECT_EQ(CodeAt(header, 12), "LIST");
    EXPECT_EQ(CodeAt(header, 20), "hdrl");
    EXPECT_EQ(CodeAt(header, 24), "avih");
    EXPECT_EQ(CodeAt(header, 96), "strl");
    EXPECT_EQ(CodeAt(header, 100), "strh");
    EXPECT_EQ(CodeAt(header, 164), "strf");
    EXPECT_EQ(CodeAt(header, 220), "movi");
    EXPECT_EQ(20 + U32At(header, 16), 212u) << "the header list ends where the film begins";
    EXPECT_EQ(96 + U32At(header, 92), 212u) << "the stream list ends there, too";
}

TEST(AviLayoutTest, HeaderCountsFramesAndBytes)
{
    const auto header = AviHeader(kRgb24, {3, 40000});
    constexpr std::uint32_t kChunkBytes = 8 + 32;

    EXPECT_EQ(U32At(header, 32), 40000u);               // microseconds per frame
    EXPECT_EQ(U32At(header, 48), 3u);                   // frames
    EXPECT_EQ(U32At(header, 64), 5u);                   // width
    EXPECT_EQ(U32At(header, 68), 2u);                   // height
    EXPECT_EQ(U32At(header, 128), 40000u);              // scale
    EXPECT_EQ(U32At(header, 132), 1000000u);            // rate
    EXPECT_EQ(U32At(header, 140), 3u);                  // length
    EXPECT_EQ(U32At(header, 216), 4 + 3 * kChunkBytes); // 'movi' and the frames
    EXPECT_EQ(U32At(header, 4),
              224 - 8 + 3 * kChunkBytes + 8 + 3 * 16u); // the whole file but its first 8 bytes
}

TEST(AviLayoutTest, BitmapHeaderIsBottomUpRgb)
{
    const auto header = AviHeader(kRgb24, {1, 1});

    EXPECT_EQ(U32At(header, 172), 40u);             // its own size
    EXPECT_EQ(U32At(header, 176), 5u);              // width
    EXPECT_EQ(U32At(header, 180), 2u);              // height, positive: bottom-up
    EXPECT_EQ(U32At(header, 184), 1u | 24u << 16u); // planes, bits
    EXPECT_EQ(U32At(header, 188), 0u);              // BI_RGB
    EXPECT_EQ(U32At(header, 192), 32u);             // bytes
}

TEST(AviLayoutTest, YuvIsNamedByItsFourCharacters)
{
    const auto header = AviHeader(kYuy2, {1, 1});

    EXPECT_EQ(CodeAt(header, 112), "YUY2");
    EXPECT_EQ(CodeAt(header, 188), "YUY2");
    EXPECT_EQ(U32At(header, 184), 1u | 16u << 16u);
}

TEST(AviLayoutTest, FrameKeepsBottomUpRowsAndGetsPadding)
{
    const FrameFormat format{MEDIASUBTYPE_RGB24, 1, 2, true, 3};
    constexpr std::array dense{B(1), B(2), B(3), B(4), B(5), B(6)};
    std::vector<std::byte> chunk;
    AviFrameChunk(format, dense, chunk);

    EXPECT_EQ(CodeAt(chunk, 0), "00db");
    EXPECT_EQ(U32At(chunk, 4), 8u);
    EXPECT_EQ(std::vector(chunk.begin() + 8, chunk.end()),
              (std::vector{B(1), B(2), B(3), B(0), B(4), B(5), B(6), B(0)}));
}

TEST(AviLayoutTest, FrameTurnsTopDownRgbButNotYuv)
{
    std::vector<std::byte> chunk;
    constexpr std::array rgb{B(1), B(2), B(3), B(0), B(4), B(5), B(6), B(0)};
    AviFrameChunk({MEDIASUBTYPE_RGB32, 1, 2, false, 4}, rgb, chunk);
    EXPECT_EQ(chunk[8], B(4));
    EXPECT_EQ(chunk[12], B(1));

    constexpr std::array yuv{B(1), B(2), B(3), B(4), B(5), B(6), B(7), B(8)};
    AviFrameChunk({MEDIASUBTYPE_YUY2, 2, 2, false, 2}, yuv, chunk);
    EXPECT_EQ(chunk[8], B(1));
    EXPECT_EQ(chunk[12], B(5));
}

TEST(AviLayoutTest, FrameCanBeWrittenIntoUsedMemory)
{
    std::vector<std::byte> chunk(1000, B(0xFF));
    constexpr std::array dense{B(1), B(2), B(3)};
    AviFrameChunk({MEDIASUBTYPE_RGB24, 1, 1, true, 3}, dense, chunk);

    EXPECT_EQ(std::vector(chunk.begin() + 8, chunk.end()), (std::vector{B(1), B(2), B(3), B(0)}));
}

TEST(AviLayoutTest, IndexCountsOffsetsFromTheWordMovi)
{
    const auto index = AviIndex(kRgb24, 2);

    ASSERT_EQ(index.size(), 8u + 2 * 16u);
    EXPECT_EQ(CodeAt(index, 0), "idx1");
    EXPECT_EQ(U32At(index, 4), 32u);
    EXPECT_EQ(CodeAt(index, 8), "00db");
    EXPECT_EQ(U32At(index, 16), 4u);
    EXPECT_EQ(U32At(index, 20), 32u);
    EXPECT_EQ(U32At(index, 32), 4u + 40u);
}

} // namespace
} // namespace vxgrab
