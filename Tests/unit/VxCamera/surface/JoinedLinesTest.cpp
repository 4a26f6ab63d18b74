#include "PipelineFixture.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxBufferConverter.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/camera/VxPipeline.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr std::uint32_t kWidthPx = 65; // 97.5 bytes a line
constexpr std::uint32_t kHeightPx = 21;
constexpr std::uint32_t kJoinedBytes = 2048; // 97.5 * 21, rounded up

/// The highest 8 of the 12 bits of a pixel of the block, by its place in the whole stream of pixels.
std::uint8_t LevelAt(std::uint64_t blockId, std::size_t pixel)
{
    const auto byteAt = [blockId](std::size_t offset) {
        return std::to_integer<unsigned>(StreamPackets::ByteAt(blockId, offset));
    };
    const std::size_t pair = pixel / 2 * 3;
    const unsigned level =
        pixel % 2 == 0 ? (byteAt(pair + 1) & 0xF) << 4 | byteAt(pair) >> 4 : byteAt(pair + 2);
    return static_cast<std::uint8_t>(level); // 8 bits
}

/// A camera that cannot be asked for a packet again, and lets its lines of Mono12p run together.
class JoinedLinesTest : public PipelineFixture {
protected:
    JoinedLinesTest()
    {
        m_packets.leader = StreamPackets::Mono8(kWidthPx, kHeightPx);
        m_packets.leader.pixelFormat = 0x010C0047; // Mono12p
        m_packets.payloadBytes = kJoinedBytes;
        m_pipeline.SetBufferSize(kJoinedBytes); // as the camera's payload size tells
    }

    /// @return  the first block that is no more taken for one that was cut
    VxBuffer* FirstGood()
    {
        constexpr std::uint64_t kBlocks = 8; // one behind the other, so that none is waited for
        for (std::uint64_t id = 1; id <= kBlocks; ++id)
            m_stream.Put(m_packets, id);
        for (std::uint64_t id = 1; id <= kBlocks; ++id) {
            VxBuffer* const buffer = Next();
            if (buffer == nullptr || buffer->GetOperationResult().IsOK())
                return buffer;
            EXPECT_EQ(buffer->GetOperationResult().Code(), VxError::MissingPackets);
            EXPECT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());
        }
        return nullptr;
    }
};

void ExpectPictureOf(std::uint64_t blockId, const std::vector<std::uint8_t>& converted, bool isFlipped)
{
    for (std::size_t y = 0; y < kHeightPx; ++y)
        for (std::size_t x = 0; x < kWidthPx; ++x) {
            const std::size_t row = isFlipped ? kHeightPx - 1 - y : y;
            for (std::size_t channel = 0; channel < 3; ++channel)
                ASSERT_EQ(converted[(row * kWidthPx + x) * 3 + channel], LevelAt(blockId, y * kWidthPx + x))
                    << x << ", " << y;
        }
}

} // namespace

TEST_F(JoinedLinesTest, AreShownEitherWayUp)
{
    for (const bool isGrowing : {false, true}) {
        m_pipeline.SetHandleBufferTooSmall(isGrowing);
        ASSERT_TRUE(m_pipeline.Start().IsOK());
        VxBuffer* const buffer = FirstGood();
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(buffer->GetImage()->GetWidth(), kWidthPx);
        EXPECT_EQ(buffer->GetImage()->GetHeight(), kHeightPx);
        EXPECT_EQ(buffer->GetImage()->GetRowPadding(), 0u);
        EXPECT_EQ(buffer->GetImage()->GetSize(), kJoinedBytes);

        VxBufferConverter converter(-1);
        for (const auto flip : {VxVerticalFlip::Off, VxVerticalFlip::On}) {
            std::vector<std::uint8_t> converted(std::size_t{kWidthPx} * kHeightPx * 3);
            VxBuffer destination(VxPayloadType::Image);
            ASSERT_TRUE(destination.GetImage()
                            ->Attach(converted, kWidthPx, kHeightPx, VxPfnc::kBgr8, 0, 0, 0)
                            .IsOK());
            const VxResult result = converter.Convert(*buffer, destination, VxReallocate::No, flip);
            ASSERT_TRUE(result.IsOK()) << result.GetDescription().GetAscii();
            ExpectPictureOf(buffer->GetBlockID(), converted, flip == VxVerticalFlip::On);
        }
        EXPECT_TRUE(m_pipeline.ReleaseBuffer(buffer).IsOK());
        EXPECT_TRUE(m_pipeline.Stop().IsOK());
    }
}
