#include "VxCamera/wire/gvsp/ImageTrailer.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvsp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kTrailer = FromHex("00 00 00 01 00 00 01 E0");

TEST(ImageTrailerTest, ReadsTypeAndLines)
{
    const auto trailer = ParseImageTrailer(kTrailer);

    ASSERT_TRUE(trailer);
    EXPECT_EQ(trailer->payloadType.bits, PayloadType::kImage);
    EXPECT_EQ(trailer->heightPx, 480u);
}

TEST(ImageTrailerTest, TakesAnImageWithChunks)
{
    const auto trailer = ParseImageTrailer(FromHex("00 00 40 01 00 00 01 E0 | 00 00 10 00 00 00 00 00"));

    ASSERT_TRUE(trailer);
    EXPECT_EQ(trailer->payloadType.bits, 0x4001);
    EXPECT_EQ(trailer->heightPx, 480u);
}

TEST(ImageTrailerTest, RejectsAnotherKindOfTrailer)
{
    EXPECT_EQ(ErrorOf(ParseImageTrailer(FromHex("00 00 00 04 00 00 01 E0"))), VxError::InvalidData);
}

TEST(ImageTrailerTest, RejectsEveryShorterLength)
{
    ASSERT_EQ(kTrailer.size(), kImageTrailerBytes);
    for (std::size_t length = 0; length < kTrailer.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseImageTrailer(First(kTrailer, length))), VxError::Truncated) << length;
}

TEST(ImageTrailerTest, EveryTrailerTellsItsPayloadType)
{
    const auto start = FromHex("00 00 00 02");

    const auto type = ParseTrailerPayloadType(start);

    ASSERT_TRUE(type);
    EXPECT_EQ(type->bits, PayloadType::kRawData);
    for (std::size_t length = 0; length < start.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseTrailerPayloadType(First(start, length))), VxError::Truncated) << length;
}

TEST(ImageTrailerTest, TheOldExtendedChunkDataHaveTheHeightBehindTheirLength)
{
    const auto trailer = FromHex("00 00 00 05 | 00 00 40 00 | 00 00 01 E0 | 00 00 00 09");

    const auto read = ParseImageTrailer(trailer);

    ASSERT_TRUE(read);
    EXPECT_EQ(read->heightPx, 480u);
    EXPECT_EQ(ErrorOf(ParseImageTrailer(First(trailer, 11))), VxError::Truncated);
    EXPECT_EQ(ImageTrailerBytes({PayloadType::kExtendedChunkData}), 16u);
    EXPECT_EQ(ImageTrailerBytes({PayloadType::kImage | PayloadType::kChunksFollow}), 16u);
    EXPECT_EQ(ImageTrailerBytes({PayloadType::kImage}), 8u);
}

TEST(ImageTrailerTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 500; ++i) {
        const ImageTrailer written{.payloadType = {PayloadType::kImage},
                                   .heightPx = random.Number<std::uint32_t>()};
        bytes::Vector memory(kImageTrailerBytes);
        VxByteWriter out(memory);

        WriteImageTrailer(out, written);

        ASSERT_TRUE(out.Ok());
        const auto read = ParseImageTrailer(out.Written());
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

TEST(ImageTrailerTest, WritesTheGoldenBytes)
{
    bytes::Vector memory(kImageTrailerBytes);
    VxByteWriter out(memory);

    WriteImageTrailer(out, {.payloadType = {PayloadType::kImage}, .heightPx = 480});

    EXPECT_EQ(memory, kTrailer);
}

} // namespace
