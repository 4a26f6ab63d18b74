#include "VxDSSource/stream/PictureProcessor.h"

#include <gtest/gtest.h>

namespace vxds {
namespace {

constexpr PictureSize kSource{40, 30};
constexpr PictureSize kSmaller{20, 15};

cv::Mat Noise(int channels)
{
    cv::Mat picture(static_cast<int>(kSource.heightPx), static_cast<int>(kSource.widthPx), CV_8UC(channels));
    cv::randu(picture, 0, 256);
    return picture;
}

FrameTarget TargetOf(PictureSize delivered, std::int32_t kernelSize, std::int32_t zoomValue = 0)
{
    FrameTarget target;
    target.delivered = delivered;
    target.kernelSize = kernelSize;
    target.zoomValue = zoomValue;
    target.source = kSource;
    target.zoom = ZoomTable(kSource);
    return target;
}

TEST(PictureProcessorTest, HandsOutThePictureItselfWhenThereIsNothingToDo)
{
    PictureProcessor processor;
    const cv::Mat source = Noise(3);

    EXPECT_EQ(processor.Process(source, TargetOf(kSource, 0), cv::Mat()).data, source.data);
}

TEST(PictureProcessorTest, KeepsItsMemoryFromFrameToFrame)
{
    for (const FrameTarget& target :
         {TargetOf(kSmaller, 0), TargetOf(kSource, 3), TargetOf(kSmaller, 5), TargetOf(kSource, 3, 4)})
        for (const int channels : {3, 4}) {
            PictureProcessor processor;
            const cv::Mat source = Noise(channels);
            const std::uint8_t* const first = processor.Process(source, target, cv::Mat()).data;

            for (int frame = 0; frame < 3; ++frame)
                EXPECT_EQ(processor.Process(source, target, cv::Mat()).data, first);
        }
}

TEST(PictureProcessorTest, WritesTheLastStepIntoTheFinalPicture)
{
    for (const FrameTarget& target :
         {TargetOf(kSmaller, 0), TargetOf(kSmaller, 3), TargetOf(kSmaller, 0, 9)}) {
        PictureProcessor processor;
        const cv::Mat source = Noise(3);
        cv::Mat final(static_cast<int>(kSmaller.heightPx), static_cast<int>(kSmaller.widthPx), CV_8UC3);

        const cv::Mat result = processor.Process(source, target, final);

        EXPECT_EQ(result.data, final.data);
        // A frame that has no final picture does not get the memory of one that had.
        EXPECT_NE(processor.Process(source, target, cv::Mat()).data, final.data);
    }
}

TEST(PictureProcessorTest, LeavesTheSourceAsItIs)
{
    PictureProcessor processor;
    const cv::Mat source = Noise(3);
    const cv::Mat before = source.clone();

    (void)processor.Process(source, TargetOf(kSource, 5), cv::Mat());

    EXPECT_EQ(cv::norm(source, before, cv::NORM_INF), 0.0);
}

} // namespace
} // namespace vxds
