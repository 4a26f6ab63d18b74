#include "vxgrab/FrameRecorder.h"

#include <gtest/gtest.h>

#include <array>

namespace vxgrab {
namespace {

using namespace std::chrono_literals;

constexpr FrameTally::TimePoint kStart{100s};
constexpr std::array<std::byte, 3> kBlack{};
constexpr std::array kGrey{std::byte{128}, std::byte{128}, std::byte{128}};

DeliveredFrame Frame(std::span<const std::byte> bytes, bool hasMediaTime)
{
    DeliveredFrame frame;
    frame.bytes = bytes;
    frame.hasMediaTime = hasMediaTime;
    return frame;
}

RecordingPlan OurPlan()
{
    RecordingPlan plan;
    plan.isOurFilter = true;
    return plan;
}

bool IsNewsSet(const FrameRecorder& recorder)
{
    return ::WaitForSingleObject(recorder.News(), 0) == WAIT_OBJECT_0;
}

std::vector<std::uint64_t> NumbersQueued(FrameRecorder& recorder)
{
    std::vector<std::uint64_t> numbers;
    while (const auto picture = recorder.TakePicture())
        numbers.push_back(picture->number);
    return numbers;
}

TEST(FrameRecorderTest, OurBlackPictureIsNoZeroFrame)
{
    FrameRecorder recorder(OurPlan(), kStart);
    recorder.OnFrame(Frame(kBlack, true), kStart);
    recorder.OnFrame(Frame(kBlack, false), kStart);
    recorder.OnFrame(Frame(kGrey, false), kStart); // a zero frame with the status drawn into it

    EXPECT_EQ(recorder.State().tally.Pictures(), 1u);
    EXPECT_EQ(recorder.State().tally.ZeroFrames(), 2u);
}

TEST(FrameRecorderTest, OfOtherDevicesOnlyTheBytesTell)
{
    FrameRecorder recorder(RecordingPlan{}, kStart);
    recorder.OnFrame(Frame(kBlack, true), kStart);
    recorder.OnFrame(Frame(kGrey, false), kStart);

    EXPECT_EQ(recorder.State().tally.Pictures(), 1u);
    EXPECT_EQ(recorder.State().tally.ZeroFrames(), 1u);
}

TEST(FrameRecorderTest, ZeroFramesDoNotCountTowardsTheWantedPictures)
{
    RecordingPlan plan = OurPlan();
    plan.wantedPictures = 2;
    FrameRecorder recorder(plan, kStart);

    recorder.OnFrame(Frame(kBlack, false), kStart);
    recorder.OnFrame(Frame(kGrey, true), kStart);
    EXPECT_FALSE(recorder.IsComplete());
    EXPECT_FALSE(IsNewsSet(recorder));

    recorder.OnFrame(Frame(kGrey, true), kStart);
    EXPECT_TRUE(recorder.IsComplete());
    EXPECT_TRUE(IsNewsSet(recorder));
}

TEST(FrameRecorderTest, CountsNothingAfterTheLastWantedPicture)
{
    RecordingPlan plan = OurPlan();
    plan.wantedPictures = 1;
    FrameRecorder recorder(plan, kStart);

    for (int i = 0; i < 3; ++i)
        recorder.OnFrame(Frame(kGrey, true), kStart);

    EXPECT_EQ(recorder.State().tally.Delivered(), 1u);
}

TEST(FrameRecorderTest, QueuesTheFirstPictureOrEveryNth)
{
    RecordingPlan first = OurPlan();
    first.isPictureFileWanted = true;
    RecordingPlan everyThird = first;
    everyThird.pictureEvery = 3;
    FrameRecorder one(first, kStart);
    FrameRecorder many(everyThird, kStart);

    for (int i = 0; i < 7; ++i) {
        one.OnFrame(Frame(kGrey, true), kStart);
        many.OnFrame(Frame(kGrey, true), kStart);
    }

    EXPECT_EQ(NumbersQueued(one), (std::vector<std::uint64_t>{1}));
    EXPECT_EQ(NumbersQueued(many), (std::vector<std::uint64_t>{1, 4, 7}));
}

TEST(FrameRecorderTest, CopiesTheBytesAndTheFormatOfTheMoment)
{
    RecordingPlan plan = OurPlan();
    plan.format.widthPx = 1;
    plan.isPictureFileWanted = true;
    plan.pictureEvery = 1;
    FrameRecorder recorder(plan, kStart);
    FrameFormat wider;
    wider.widthPx = 2;

    recorder.OnFrame(Frame(kGrey, true), kStart);
    DeliveredFrame changed = Frame(kBlack, true);
    changed.newFormat = wider;
    recorder.OnFrame(changed, kStart);

    const auto before = recorder.TakePicture();
    const auto after = recorder.TakePicture();
    ASSERT_TRUE(before && after);
    EXPECT_EQ(before->format.widthPx, 1);
    EXPECT_EQ(before->bytes, std::vector<std::byte>(kGrey.begin(), kGrey.end()));
    EXPECT_EQ(after->format.widthPx, 2);
    EXPECT_EQ(after->bytes, std::vector<std::byte>(kBlack.begin(), kBlack.end()));
}

TEST(FrameRecorderTest, CountsPicturesThatASlowDiskDoesNotTake)
{
    RecordingPlan plan = OurPlan();
    plan.isPictureFileWanted = true;
    plan.pictureEvery = 1;
    FrameRecorder recorder(plan, kStart);

    for (int i = 0; i < 20; ++i)
        recorder.OnFrame(Frame(kGrey, true), kStart);

    EXPECT_EQ(recorder.State().skippedPictures + NumbersQueued(recorder).size(), 20u);
    EXPECT_GT(recorder.State().skippedPictures, 0u);
}

TEST(FrameRecorderTest, RemembersWhenTheLastPictureCame)
{
    FrameRecorder recorder(OurPlan(), kStart);
    EXPECT_EQ(recorder.State().lastPicture, kStart);

    recorder.OnFrame(Frame(kGrey, true), kStart + 1s);
    recorder.OnFrame(Frame(kBlack, false), kStart + 2s);
    EXPECT_EQ(recorder.State().lastPicture, kStart + 1s);
}

} // namespace
} // namespace vxgrab
