#include "VxCamera/wire/gvsp/ImageLeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvsp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kLeader = FromHex("00 00 00 01 | 00 00 00 01 23 45 67 89 | 01 08 00 01 | 00 00 02 80 | 00 00 01 E0"
                             "| 00 00 00 10 | 00 00 00 20 | 00 04 | 00 08");

TEST(ImageLeaderTest, ReadsTypeAndTime)
{
    const auto leader = ParseImageLeader(kLeader);

    ASSERT_TRUE(leader);
    EXPECT_EQ(leader->start.payloadType.bits, PayloadType::kImage);
    EXPECT_EQ(leader->start.timestampTicks, 0x123456789u);
}

TEST(ImageLeaderTest, ReadsPixelFormatAndSize)
{
    const auto leader = ParseImageLeader(kLeader);

    ASSERT_TRUE(leader);
    EXPECT_EQ(leader->pixelFormat, 0x01080001u);
    EXPECT_EQ(leader->widthPx, 640u);
    EXPECT_EQ(leader->heightPx, 480u);
}

TEST(ImageLeaderTest, ReadsOffsetsAndPaddings)
{
    const auto leader = ParseImageLeader(kLeader);

    ASSERT_TRUE(leader);
    EXPECT_EQ(leader->offsetXPx, 16u);
    EXPECT_EQ(leader->offsetYPx, 32u);
    EXPECT_EQ(leader->linePaddingBytes, 4);
    EXPECT_EQ(leader->imagePaddingBytes, 8);
}

TEST(ImageLeaderTest, TakesAnImageWithChunks)
{
    auto bytes = kLeader;
    bytes[2] = std::byte{0x40};

    const auto leader = ParseImageLeader(bytes);

    ASSERT_TRUE(leader);
    EXPECT_TRUE(leader->start.payloadType.HasChunks());
}

TEST(ImageLeaderTest, RejectsAnotherKindOfLeader)
{
    auto bytes = kLeader;
    bytes[3] = std::byte{0x02};

    EXPECT_EQ(ErrorOf(ParseImageLeader(bytes)), VxError::InvalidData);
}

TEST(ImageLeaderTest, RejectsEveryShorterLength)
{
    ASSERT_EQ(kLeader.size(), kImageLeaderBytes);
    for (std::size_t length = 0; length < kLeader.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseImageLeader(First(kLeader, length))), VxError::Truncated) << length;
}

TEST(ImageLeaderTest, IgnoresBytesAfterTheLastField)
{
    EXPECT_TRUE(ParseImageLeader(bytes::Join(kLeader, FromHex("FF FF FF FF"))));
}

TEST(ImageLeaderTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 500; ++i) {
        const ImageLeader written{.start = {.fieldInfo = random.Number<std::uint8_t>(),
                                            .genericFlags = random.Number<std::uint8_t>(),
                                            .payloadType = {PayloadType::kImage},
                                            .timestampTicks = random.Number<std::uint64_t>()},
                                  .pixelFormat = random.Number<std::uint32_t>(),
                                  .widthPx = random.Number<std::uint32_t>(),
                                  .heightPx = random.Number<std::uint32_t>(),
                                  .offsetXPx = random.Number<std::uint32_t>(),
                                  .offsetYPx = random.Number<std::uint32_t>(),
                                  .linePaddingBytes = random.Number<std::uint16_t>(),
                                  .imagePaddingBytes = random.Number<std::uint16_t>()};
        bytes::Vector memory(kImageLeaderBytes);
        VxByteWriter out(memory);

        WriteImageLeader(out, written);

        ASSERT_TRUE(out.Ok());
        const auto read = ParseImageLeader(out.Written());
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

TEST(ImageLeaderTest, WritesTheGoldenBytes)
{
    bytes::Vector memory(kImageLeaderBytes);
    VxByteWriter out(memory);

    WriteImageLeader(out, {.start = {.payloadType = {PayloadType::kImage}, .timestampTicks = 0x123456789},
                           .pixelFormat = 0x01080001,
                           .widthPx = 640,
                           .heightPx = 480,
                           .offsetXPx = 16,
                           .offsetYPx = 32,
                           .linePaddingBytes = 4,
                           .imagePaddingBytes = 8});

    EXPECT_EQ(memory, kLeader);
}

} // namespace
