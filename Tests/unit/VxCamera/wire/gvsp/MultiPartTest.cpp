#include "VxCamera/wire/gvsp/MultiPart.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace gvsp {
namespace {

using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

// Payload type 10; one confidence map of 0x10 bytes, then a picture: Mono8, 4 x 3 pixels at (1, 2).
const auto kLeader = FromHex("00 00 00 0A 00 00 00 00 00 00 00 07"
                             "00 09 0000 0000 0010 01080001 0000 00 00 00000000 0000 0000"
                             "00000004 00000004 00000000 00000000 0000 0000 00000000"
                             "00 01 0001 0000 000C 01080001 0000 05 00 00000000 0003 0004"
                             "00000004 00000003 00000001 00000002 0006 0007 00000000");

TEST(MultiPartTest, ReadsEveryFieldOfAPart)
{
    ASSERT_EQ(PartCount(kLeader), 2u);

    const auto map = ParsePartDescriptor(kLeader, 0);
    const auto image = ParsePartDescriptor(kLeader, 1);

    ASSERT_TRUE(map);
    EXPECT_EQ(map->dataType, PartDescriptor::kConfidenceMap);
    EXPECT_EQ(map->lengthBytes, 0x10u);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->dataType, PartDescriptor::kImage2D);
    EXPECT_EQ(image->lengthBytes, 0x10000000Cu); // 48 bits
    EXPECT_EQ(image->pixelFormat, 0x01080001u);
    EXPECT_EQ(image->sourceId, 5u);
    EXPECT_EQ(image->purposeId, 3u);
    EXPECT_EQ(image->regionId, 4u);
    EXPECT_EQ(image->widthPx, 4u);
    EXPECT_EQ(image->heightPx, 3u);
    EXPECT_EQ(image->offsetXPx, 1u);
    EXPECT_EQ(image->offsetYPx, 2u);
    EXPECT_EQ(image->linePaddingBytes, 6u);
    EXPECT_EQ(image->imagePaddingBytes, 7u);
}

TEST(MultiPartTest, OnlyWholePartsCount)
{
    for (std::size_t size = 0; size < kLeader.size(); ++size) {
        const std::size_t whole = size < 12 ? 0 : (size - 12) / 48;
        EXPECT_EQ(PartCount(First(kLeader, size)), whole) << size;
        EXPECT_EQ(ErrorOf(ParsePartDescriptor(First(kLeader, size), whole)), VxError::Truncated) << size;
    }
}

TEST(MultiPartTest, APayloadTellsItsPartAndItsPlace)
{
    const auto data = FromHex("02 40 0001 0000 0203 AA BB");

    const auto payload = ParsePartPayload(data);

    ASSERT_TRUE(payload);
    EXPECT_EQ(payload->partId, 2u);
    EXPECT_EQ(payload->zoneInfo, 0x40u);
    EXPECT_EQ(payload->offsetBytes, 0x100000203u);
    EXPECT_EQ(bytes::Copy(payload->data), FromHex("AA BB"));
    for (std::size_t size = 0; size < kPartPrefixBytes; ++size)
        EXPECT_EQ(ErrorOf(ParsePartPayload(First(data, size))), VxError::Truncated) << size;
}

TEST(MultiPartTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 200; ++i) {
        const PartDescriptor written{.dataType = random.Number<std::uint16_t>(),
                                     .lengthBytes = random.Number<std::uint64_t>() >> 16,
                                     .pixelFormat = random.Number<std::uint32_t>(),
                                     .sourceId = random.Number<std::uint8_t>(),
                                     .purposeId = random.Number<std::uint16_t>(),
                                     .regionId = random.Number<std::uint16_t>(),
                                     .widthPx = random.Number<std::uint32_t>(),
                                     .heightPx = random.Number<std::uint32_t>(),
                                     .offsetXPx = random.Number<std::uint32_t>(),
                                     .offsetYPx = random.Number<std::uint32_t>(),
                                     .linePaddingBytes = random.Number<std::uint16_t>(),
                                     .imagePaddingBytes = random.Number<std::uint16_t>()};
        bytes::Vector memory(kLeaderStartBytes + kPartDescriptorBytes);
        VxByteWriter out(memory);
        out.Zeros(kLeaderStartBytes);
        WritePartDescriptor(out, written);

        ASSERT_TRUE(out.Ok());
        ASSERT_EQ(out.Written().size(), memory.size());
        const auto read = ParsePartDescriptor(memory, 0);
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

} // namespace
} // namespace gvsp
