#include "VxDSSource/camera/VxBufferConverter.h"

#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxImage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

using testing::ElementsAre;

namespace {

constexpr int kLibraryChooses = -1;

/// A Mono8 picture of 2 x 2 pixels: 1 2 / 3 4.
class VxBufferConverterTest : public testing::Test {
protected:
    VxBufferConverterTest()
    {
        EXPECT_TRUE(m_source.GetImage()->Alloc(2, 2, VxPfnc::kMono8, 0, 0, 0).IsOK());
        std::ranges::copy(std::array<std::uint8_t, 4>{1, 2, 3, 4}, m_source.GetImage()->GetDataPointer());
    }

    void Attach(std::vector<std::uint8_t>& memory, std::uint32_t width, std::uint32_t height,
                std::uint32_t code, std::uint32_t rowPadding)
    {
        ASSERT_TRUE(m_destination.GetImage()->Attach(memory, width, height, code, rowPadding, 0, 0).IsOK());
    }

    VxResult Convert(VxVerticalFlip flip = VxVerticalFlip::Off, VxReallocate reallocate = VxReallocate::No)
    {
        return m_converter.Convert(m_source, m_destination, reallocate, flip);
    }

    VxBuffer m_source{VxPayloadType::Image};
    VxBuffer m_destination{VxPayloadType::Image};
    VxBufferConverter m_converter{kLibraryChooses};
};

} // namespace

TEST_F(VxBufferConverterTest, WritesIntoAttachedMemory)
{
    std::vector<std::uint8_t> memory(12);
    Attach(memory, 2, 2, VxPfnc::kBgr8, 0);

    ASSERT_TRUE(Convert().IsOK());

    EXPECT_THAT(memory, ElementsAre(1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4));
}

TEST_F(VxBufferConverterTest, FlipStartsWithTheLastRow)
{
    std::vector<std::uint8_t> memory(16);
    Attach(memory, 2, 2, VxPfnc::kBgra8, 0);

    ASSERT_TRUE(Convert(VxVerticalFlip::On).IsOK());

    EXPECT_THAT(memory, ElementsAre(3, 3, 3, 255, 4, 4, 4, 255, 1, 1, 1, 255, 2, 2, 2, 255));
}

TEST_F(VxBufferConverterTest, LeavesRowPaddingAlone)
{
    std::vector<std::uint8_t> memory(16, 99);
    Attach(memory, 2, 2, VxPfnc::kBgr8, 2);

    ASSERT_TRUE(Convert().IsOK());

    EXPECT_THAT(memory, ElementsAre(1, 1, 1, 2, 2, 2, 99, 99, 3, 3, 3, 4, 4, 4, 99, 99));
}

TEST_F(VxBufferConverterTest, ReadsOverTheSourcesRowPadding)
{
    std::vector<std::uint8_t> padded{1, 2, 77, 3, 4, 77};
    ASSERT_TRUE(m_source.GetImage()->Attach(padded, 2, 2, VxPfnc::kMono8, 1, 0, 0).IsOK());
    std::vector<std::uint8_t> memory(12);
    Attach(memory, 2, 2, VxPfnc::kBgr8, 0);

    ASSERT_TRUE(Convert().IsOK());

    EXPECT_THAT(memory, ElementsAre(1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4));
}

TEST_F(VxBufferConverterTest, WritesTheCommonPartWhenSizesDiffer)
{
    std::vector<std::uint8_t> memory(3 * 3, 99);
    Attach(memory, 1, 3, VxPfnc::kBgr8, 0);

    ASSERT_TRUE(Convert().IsOK());

    EXPECT_THAT(memory, ElementsAre(1, 1, 1, 3, 3, 3, 99, 99, 99));
}

TEST_F(VxBufferConverterTest, ReallocationGivesTheSourcesSize)
{
    ASSERT_TRUE(m_destination.GetImage()->Alloc(1, 1, VxPfnc::kBgr8, 0, 0, 0).IsOK());

    ASSERT_TRUE(Convert(VxVerticalFlip::Off, VxReallocate::Yes).IsOK());

    const VxImage& image = *m_destination.GetImage();
    EXPECT_EQ(image.GetWidth(), 2u);
    EXPECT_EQ(image.GetHeight(), 2u);
    EXPECT_EQ(image.GetPixelType(), VxPfnc::kBgr8);
    EXPECT_THAT(std::vector(image.GetDataPointer(), image.GetDataPointer() + image.GetSize()),
                ElementsAre(1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4));
}

TEST_F(VxBufferConverterTest, ReallocationKeepsMemoryOfTheRightSize)
{
    std::vector<std::uint8_t> memory(12);
    Attach(memory, 2, 2, VxPfnc::kBgr8, 0);

    ASSERT_TRUE(Convert(VxVerticalFlip::Off, VxReallocate::Yes).IsOK());

    EXPECT_EQ(m_destination.GetImage()->GetDataPointer(), memory.data());
    EXPECT_THAT(memory, ElementsAre(1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4));
}

TEST_F(VxBufferConverterTest, RefusesADestinationWithoutAPicture)
{
    EXPECT_EQ(Convert().Code(), VxError::InvalidParameter);
    EXPECT_EQ(
        Convert().GetDescription(),
        "The destination buffer holds no picture: it has no size, format or memory yet; the source is 2x2 "
        "Mono8 (0x01080001).");
    EXPECT_EQ(Convert(VxVerticalFlip::Off, VxReallocate::Yes).Code(), VxError::InvalidParameter);
}

TEST_F(VxBufferConverterTest, TooLittleMemoryForADestinationNamesBothFormatsAndSizes)
{
    std::vector<std::uint8_t> memory(11, 99);
    const VxResult attached = m_destination.GetImage()->Attach(memory, 2, 2, VxPfnc::kBgr8, 0, 0, 0);
    const VxResult converted = Convert();

    EXPECT_EQ(attached.Code(), VxError::BufferTooSmall);
    EXPECT_EQ(attached.GetDescription(),
              "the picture, 2x2 BGR8 (0x02180015), takes 12 bytes, the memory has 11");
    EXPECT_EQ(converted.Code(), VxError::BufferTooSmall);
    EXPECT_EQ(converted.GetDescription(), "The destination cannot be as it was asked for: the picture, 2x2 "
                                          "BGR8 (0x02180015), takes 12 bytes, the "
                                          "memory has 11; the source is 2x2 Mono8 (0x01080001).");
    EXPECT_THAT(memory, testing::Each(99));
}

TEST_F(VxBufferConverterTest, RefusesASourceWithoutAPicture)
{
    const VxBuffer empty(VxPayloadType::Image);
    std::vector<std::uint8_t> memory(12, 99);
    Attach(memory, 2, 2, VxPfnc::kBgr8, 0);

    const VxResult result = m_converter.Convert(empty, m_destination, VxReallocate::No, VxVerticalFlip::Off);

    EXPECT_EQ(result.Code(), VxError::InvalidParameter);
    EXPECT_THAT(memory, testing::Each(99));
}

TEST_F(VxBufferConverterTest, RefusesBuffersForOtherPayloads)
{
    VxBuffer other(VxPayloadType::Other);

    EXPECT_EQ(m_converter.Convert(m_source, other, VxReallocate::Yes, VxVerticalFlip::Off).Code(),
              VxError::InvalidParameter);
    EXPECT_EQ(m_converter.Convert(other, m_destination, VxReallocate::Yes, VxVerticalFlip::Off).Code(),
              VxError::InvalidParameter);
}

TEST_F(VxBufferConverterTest, RefusedFormatsLeaveTheDestinationAlone)
{
    std::vector<std::uint8_t> memory(3, 99);
    Attach(memory, 1, 1, VxPfnc::kRgb8, 0);

    const VxResult result = Convert(VxVerticalFlip::Off, VxReallocate::Yes);

    EXPECT_EQ(result.Code(), VxError::NotSupported);
    EXPECT_EQ(result.GetDescription(),
              "There is no conversion from 2x2 Mono8 (0x01080001) with 0 bytes of row padding to 1x1 RGB8 "
              "(0x02180014) with 0 bytes of row padding.");
    EXPECT_EQ(m_destination.GetImage()->GetDataPointer(), memory.data());
    EXPECT_EQ(m_destination.GetImage()->GetWidth(), 1u);
    EXPECT_THAT(memory, testing::Each(99));
}

TEST_F(VxBufferConverterTest, AnyNumberOfThreadsGivesTheSamePicture)
{
    for (const int threadCount : {-5, 0, 1, 64}) {
        std::vector<std::uint8_t> memory(12);
        Attach(memory, 2, 2, VxPfnc::kBgr8, 0);
        VxBufferConverter converter(threadCount);

        ASSERT_TRUE(converter.Convert(m_source, m_destination, VxReallocate::No, VxVerticalFlip::Off).IsOK());

        EXPECT_THAT(memory, ElementsAre(1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4)) << threadCount;
    }
}
