#include "FramesFixture.h"

#include <algorithm>

namespace {

using vxds::Setting;

class VxDSStreamProcessingTest : public FramesFixture {};

TEST_F(VxDSStreamProcessingTest, FiltersAtSourceSize)
{
    Stream(12, 9);
    Store(Setting::KernelSize, 3);
    UseType(0, 12, 9);
    const ReferencePicture picture = TestPicture(12, 9);
    Queue(picture);
    CanarySample sample(12 * 9 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Median(picture, 3), 3, true));
    EXPECT_EQ(TheCamera().Pictures(), (Lines{"image.Alloc 12x9 02180015 padding 0", "Convert #0 flipped"}));
}

TEST_F(VxDSStreamProcessingTest, FiltersWithTheLargerKernelAndFourChannels)
{
    Stream(12, 9);
    Store(Setting::KernelSize, 5);
    UseType(1, 12, 9);
    const ReferencePicture picture = TestPicture(12, 9);
    Queue(picture);
    CanarySample sample(12 * 9 * 4);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Median(picture, 5), 4, true));
}

TEST_F(VxDSStreamProcessingTest, ScalesToTheOutputSize)
{
    ASSERT_TRUE(Settings().SetOutputSize(8, 6));
    Stream(16, 12);
    UseType(0, 8, 6);
    const ReferencePicture picture = TestPicture(16, 12);
    Queue(picture);
    CanarySample sample(8 * 6 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Halved(picture), 3, true));
}

TEST_F(VxDSStreamProcessingTest, FiltersAfterScaling)
{
    ASSERT_TRUE(Settings().SetOutputSize(8, 6));
    Stream(16, 12);
    Store(Setting::KernelSize, 3);
    UseType(0, 8, 6);
    const ReferencePicture picture = TestPicture(16, 12);
    Queue(picture);
    CanarySample sample(8 * 6 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Median(Halved(picture), 3), 3, true));
}

TEST_F(VxDSStreamProcessingTest, ShowsTheCentralPartWithZoom)
{
    ASSERT_TRUE(Settings().SetOutputSize(5, 4));
    Stream(20, 16);
    Store(Setting::ZoomValue, 5); // 10 x 8 from (5, 4), then halved
    UseType(0, 5, 4);
    const ReferencePicture picture = TestPicture(20, 16);
    Queue(picture);
    CanarySample sample(5 * 4 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Halved(Cropped(picture, 5, 4, 10, 8)), 3, true));
}

TEST_F(VxDSStreamProcessingTest, ScalesTheCentralTenthUpToTheWholeOutput)
{
    Stream(1000, 800);
    Store(Setting::ZoomValue, 9);
    UseType(0, 1000, 800);
    // Only the central 100 x 80 are white.
    ScriptedPicture picture{1000, 800, kMono8, std::vector<std::uint8_t>(800000, 0), 0};
    for (std::size_t y = 360; y < 440; ++y)
        std::fill_n(picture.bytes.begin() + static_cast<std::ptrdiff_t>(y * 1000 + 450), 100,
                    std::uint8_t{255});
    TheCamera().QueuePicture(picture);
    CanarySample sample(1000 * 800 * 3);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(255));
}

TEST_F(VxDSStreamProcessingTest, CountsAStoredZoomOfTenAsNineAndANegativeOneAsNone)
{
    Stream(20, 10);
    UseType(0, 20, 10);
    const ReferencePicture picture = TestPicture(20, 10);
    const auto drawnWith = [&](std::int32_t zoom) {
        Store(Setting::ZoomValue, static_cast<std::uint32_t>(zoom));
        Queue(picture);
        CanarySample sample(20 * 10 * 3);
        Fill(sample);
        return sample.Copy();
    };

    EXPECT_EQ(drawnWith(10), drawnWith(9));
    EXPECT_NE(drawnWith(9), drawnWith(8));
    EXPECT_EQ(drawnWith(-3), AsBitmap(picture, 3, true));
}

TEST_F(VxDSStreamProcessingTest, CopiesAProcessedPictureWithoutRowPadding)
{
    Stream(4, 2);
    Store(Setting::KernelSize, 3);
    UseType(0, 6, 3);
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(6 * 3 * 3);

    Fill(sample);

    std::vector<std::uint8_t> expected(6 * 3 * 3, CanarySample::kStale);
    std::ranges::copy(AsBitmap(Median(picture, 3), 3, true), expected.begin());
    EXPECT_EQ(sample.Copy(), expected) << "contiguously, whatever the bitmap's width";
}

TEST_F(VxDSStreamProcessingTest, ZeroesAFrameForAKernelThatNoFilterTakes)
{
    Stream(8, 8);
    UseType(0, 8, 8);
    for (const std::uint32_t kernel : {2u, 4u, 257u, 0x7FFFFFFFu}) {
        Store(Setting::KernelSize, kernel); // restored from somewhere: a setter refuses it
        Queue(TestPicture(8, 8));
        CanarySample sample(8 * 8 * 3);

        Fill(sample);

        EXPECT_TRUE(sample.IsAll(0)) << kernel;
        EXPECT_TRUE(sample.time);
        EXPECT_TRUE(Done().back().starts_with("pipeline.Release(#"))
            << "the camera's buffer goes back all the same";
    }
}

TEST_F(VxDSStreamProcessingTest, CountsANegativeKernelAsNone)
{
    Stream(8, 8);
    UseType(0, 8, 8);
    Store(Setting::KernelSize, 0xFFFFFFFD); // -3
    const ReferencePicture picture = TestPicture(8, 8);
    Queue(picture);
    CanarySample sample(8 * 8 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(picture, 3, true));
}

TEST_F(VxDSStreamProcessingTest, ShowsAPictureAsItArrivesWhenTheCameraItselfWasNeverSeen)
{
    Store(Setting::Role, 1);
    Store(Setting::Width, 8);
    Store(Setting::Height, 6);
    Stream(0, 0);
    UseType(0, 8, 6);
    const ReferencePicture same = TestPicture(8, 6);
    const ReferencePicture larger = TestPicture(16, 12);
    Queue(same);
    Queue(larger);
    CanarySample first(8 * 6 * 3);
    CanarySample second(8 * 6 * 3);

    Fill(first);
    Fill(second);

    EXPECT_EQ(first.Copy(), AsBitmap(same, 3, true));
    EXPECT_EQ(second.Copy(), AsBitmap(Halved(larger), 3, true));
}

TEST_F(VxDSStreamProcessingTest, KeepsTheCamerasSizeForAReceiverThatComesAfterAController)
{
    ASSERT_TRUE(Settings().SetOutputSize(8, 6));
    Stream(16, 12);
    UseType(0, 8, 6);
    Store(Setting::Role, 1);
    Pin().ApplyConnection();
    ASSERT_EQ(TheCamera().liveDevices, 0);
    const ReferencePicture picture = TestPicture(16, 12);
    Queue(TestPicture(8, 6)); // as if another host had made the camera's picture smaller
    Queue(picture);
    CanarySample first(8 * 6 * 3);
    CanarySample second(8 * 6 * 3);

    TheCamera().log.Clear();
    Fill(first);
    Fill(second);

    EXPECT_EQ(TheCamera().Pictures(), (Lines{"image.Alloc 16x12 02180015 padding 0", "Convert #0 flipped",
                                             "image.Alloc 16x12 02180015 padding 0", "Convert #1 flipped"}));
    EXPECT_EQ(second.Copy(), AsBitmap(Halved(picture), 3, true));
}

} // namespace
