#include "CameraLink.h"

#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

namespace {

/// Seen in its pictures: the fake camera of aravis-tools draws one value along each rising diagonal, so a
/// packet that is not the one which belongs there shows.
bool IsTheFakeCamerasPicture(const VxImage& image)
{
    const std::uint8_t* const pixels = image.GetDataPointer();
    const std::uint32_t width = image.GetWidth();
    for (std::uint32_t y = 1; y < image.GetHeight(); ++y) {
        for (std::uint32_t x = 0; x + 1 < width; ++x) {
            if (pixels[std::size_t{y} * width + x] != pixels[std::size_t{y - 1} * width + x + 1])
                return false;
        }
    }
    return true;
}

TEST(AravisLossTest, AFrameOfWhichPacketsWereNotSentIsNeverPassedAsGood)
{
    const char* const address = std::getenv("VX_CAMERA");
    ASSERT_NE(address, nullptr) << "run through Tests/system/run-with-camera";
    CameraLink link;
    link.Connect(address);
    ASSERT_TRUE(link.Features().Get("AcquisitionFrameRate")->FromString("20").IsOK());
    VxGenParameterArray& way = *link.device->GetCommunicationParameters();
    ASSERT_TRUE(way.Get("PacketSize")->FromString("1500").IsOK());
    ASSERT_TRUE(way.Get("PacketSizeMode")->FromString("Fixed").IsOK());
    link.OpenStream(address);
    link.Start();

    int good = 0;
    int incomplete = 0;
    for (int i = 0; i < 60; ++i) { // 180 packets each
        const VxBuffer* const buffer = link.Next();
        ASSERT_NE(buffer, nullptr);
        const VxError code = buffer->GetOperationResult().Code();
        if (code == VxError::Ok) {
            ASSERT_TRUE(IsTheFakeCamerasPicture(*buffer->GetImage())) << "block " << buffer->GetBlockID();
            ++good;
        } else {
            EXPECT_EQ(code, VxError::MissingPackets);
            ++incomplete;
        }
    }

    EXPECT_GT(good, 0);
    EXPECT_GT(incomplete, 0);
    EXPECT_GE(link.Statistic("PacketsMissing"), incomplete);
    EXPECT_EQ(link.Statistic("PacketsRequestedAgain"), 0) << "that camera sends nothing again";
    link.Stop();
}

} // namespace
