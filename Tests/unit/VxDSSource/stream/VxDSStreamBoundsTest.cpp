#include "FramesFixture.h"

#include "BaseClasses/BitmapSizes.h"
#include "unit/VxDSSource/filter/TaskMemorySpy.h"

#include <uuids.h>

#include <algorithm>
#include <utility>

namespace {

using vxds::Setting;

class VxDSStreamBoundsTest : public FramesFixture {};

TEST_F(VxDSStreamBoundsTest, WritesNoByteBehindASampleThatIsSmallerThanItsType)
{
    Stream(16, 16);
    for (const int position : {0, 1}) {
        UseType(position, 16, 16);
        for (const std::size_t bytes : {1u, 15u, 47u, 48u, 100u, 16u * 16u * 3u - 1u}) {
            Queue(TestPicture(16, 16));
            CanarySample sample(bytes);
            Fill(sample);
            EXPECT_TRUE(sample.IsAll(0)) << bytes;
        }
    }
}

TEST_F(VxDSStreamBoundsTest, WritesNoByteBehindASmallSampleWithProcessing)
{
    Stream(16, 16);
    Store(Setting::KernelSize, 3);
    UseType(0, 16, 16);
    for (const std::size_t bytes : {1u, 47u, 100u, 767u, 768u}) {
        Queue(TestPicture(16, 16));
        CanarySample sample(bytes);
        Fill(sample);
        EXPECT_FALSE(sample.IsAll(CanarySample::kStale));
    }
}

TEST_F(VxDSStreamBoundsTest, WritesNoByteBehindASmallYuvSample)
{
    Stream(16, 16);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 16, 16);
    for (const std::size_t bytes : {1u, 31u, 33u, 511u, 512u}) {
        TheCamera().QueuePicture({16, 16, kYuyv, std::vector<std::uint8_t>(512, 100), 0});
        CanarySample sample(bytes);
        Fill(sample);
    }
}

TEST_F(VxDSStreamBoundsTest, WritesNoByteBehindASampleWhenTheTypesDepthIsNotThatOfTheFamily)
{
    Stream(16, 16);
    for (const int bits : {0, 1, 8, 16, 24, 32, 48, 64, 65535}) {
        for (const std::uint32_t family : {0u, 1u}) {
            for (const std::uint32_t kernel : {0u, 3u}) {
                Store(Setting::OutputPixelType, family);
                Store(Setting::KernelSize, kernel);
                CMediaType type;
                ASSERT_TRUE(vxds::BuildOfferedType(0, {16, 16}, type));
                HEADER(type.Format())->biBitCount = static_cast<WORD>(bits);
                HEADER(type.Format())->biSizeImage = 0xFFFFFFFF;
                ASSERT_EQ(Pin().SetMediaType(&type), S_OK);
                const ReferencePicture picture = TestPicture(16, 16);
                TheCamera().QueuePicture(family == 0 ? AsScripted(picture)
                                                     : ScriptedPicture{16, 16, kYuyv, AsBgr8(picture), 0});
                CanarySample sample(16 * 16 * 3);
                Fill(sample);
            }
        }
    }
}

TEST_F(VxDSStreamBoundsTest, ZeroesAFrameWhoseTypeHasNoBlock)
{
    Stream(4, 2);
    CMediaType none;
    none.SetType(&MEDIATYPE_Video);
    ASSERT_EQ(Pin().SetMediaType(&none), S_OK);
    QueueEmptyPicture();
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

TEST_F(VxDSStreamBoundsTest, TakesATypeThatComesWithTheSample)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    CMediaType wider;
    ASSERT_TRUE(vxds::BuildOfferedType(1, {6, 2}, wider));
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(6 * 2 * 4);
    sample.attached.emplace(wider);

    Fill(sample);

    EXPECT_EQ(TheCamera().Pictures().front(), "image.Attach 4x2 02200017 padding 8");
    AM_MEDIA_TYPE* now = nullptr;
    ASSERT_EQ(Pin().GetFormat(&now), S_OK);
    EXPECT_EQ(HEADER(now->pbFormat)->biWidth, 6);
    DeleteMediaType(now);
}

TEST_F(VxDSStreamBoundsTest, KeepsItsTypeWhereThereIsNoMemoryForTheOneThatComesWithTheSample)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    CMediaType wider;
    ASSERT_TRUE(vxds::BuildOfferedType(1, {6, 2}, wider));
    Queue(TestPicture(4, 2));
    CanarySample sample(6 * 2 * 4);
    sample.attached.emplace(wider);
    sample.onTypeTaken = [] { TheTaskMemory().isExhausted = true; };

    Fill(sample);

    TheTaskMemory().isExhausted = false;
    EXPECT_EQ(TheCamera().Pictures().front(), "image.Attach 4x2 02180015 padding 0");
    AM_MEDIA_TYPE* now = nullptr;
    ASSERT_EQ(Pin().GetFormat(&now), S_OK);
    EXPECT_EQ(now->subtype, MEDIASUBTYPE_RGB24);
    ASSERT_EQ(now->cbFormat, sizeof(VIDEOINFOHEADER)) << "it lost its block";
    EXPECT_EQ(HEADER(now->pbFormat)->biWidth, 4);
    DeleteMediaType(now);
}

TEST_F(VxDSStreamBoundsTest, TakesEvenATypeOfNoUseThatComesWithTheSample)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    QueueEmptyPicture();
    CanarySample sample(24);
    sample.attached.emplace();

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

TEST_F(VxDSStreamBoundsTest, ZeroesAFrameForAHugeOutputSize)
{
    Stream(4, 2);
    Store(Setting::Width, 0x7FFFFFFF);
    Store(Setting::Height, 0x7FFFFFFF);
    UseType(0, 0x7FFFFFFF, 0x7FFFFFFF);
    QueueEmptyPicture();
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

TEST_F(VxDSStreamBoundsTest, ZeroesAFrameForAnOutputSizeThatCannotBeDrawn)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    for (const auto& [width, height] : {std::pair{0u, 2u}, {4u, 0u}, {0xFFFFFFFFu, 2u}, {0u, 0u}}) {
        Store(Setting::Width, width);
        Store(Setting::Height, height);
        QueueEmptyPicture();
        CanarySample sample(24);
        Fill(sample);
        EXPECT_TRUE(sample.IsAll(0)) << width << " x " << height;
    }
}

TEST_F(VxDSStreamBoundsTest, DrawsATopDownOutputSize)
{
    Stream(4, 2);
    Store(Setting::Height, static_cast<std::uint32_t>(-2));
    UseType(0, 4, -2);
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(24);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(picture, 3, false));
}

TEST_F(VxDSStreamBoundsTest, SurvivesACameraWhoseImagesChangeTheirSize)
{
    Stream(8, 8);
    for (const std::uint32_t kernel : {0u, 3u}) {
        Store(Setting::KernelSize, kernel);
        UseType(0, 8, 8);
        for (const std::size_t size : {1u, 4u, 8u, 9u, 64u}) {
            Queue(TestPicture(size, size));
            CanarySample sample(8 * 8 * 3);
            Fill(sample);
        }
    }
}

TEST_F(VxDSStreamBoundsTest, ShowsNoRemainsBesideAnImageThatIsSmallerThanTheCamerasSize)
{
    Stream(8, 8);
    Store(Setting::ZoomValue, 0u);
    Store(Setting::KernelSize, 3);
    UseType(0, 8, 8);
    TheCamera().QueuePicture({8, 8, kMono8, std::vector<std::uint8_t>(64, 255), 0});
    TheCamera().QueuePicture({2, 2, kMono8, std::vector<std::uint8_t>(4, 255), 0});
    CanarySample first(8 * 8 * 3);
    CanarySample second(8 * 8 * 3);

    Fill(first);
    Fill(second);

    EXPECT_TRUE(first.IsAll(255));
    // Flipped, the small picture lies in the last two rows of the memory.
    EXPECT_TRUE(
        std::ranges::all_of(second.Bytes().first(5 * 8 * 3), [](std::uint8_t each) { return each == 0; }));
}

TEST_F(VxDSStreamBoundsTest, ZeroesAFrameOfABufferWithoutAPicture)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    TheCamera().QueuePicture({4, 2, kMono8, {}, 0});
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

} // namespace
