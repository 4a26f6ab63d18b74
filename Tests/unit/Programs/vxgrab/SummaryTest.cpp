#include "vxgrab/Summary.h"

#include <gmock/gmock.h>

#include <dshow.h>

namespace vxgrab {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

GrabReport Report()
{
    GrabReport report;
    report.camera = "127.0.0.1 (Maker Model)";
    report.format = {MEDIASUBTYPE_RGB24, 640, 480, true, 3};
    for (int i = 0; i < 3; ++i)
        report.recording.tally.Count(FrameContent::Picture, FrameTally::TimePoint(i * 40ms));
    report.recording.tally.Count(FrameContent::Zero, FrameTally::TimePoint(120ms));
    report.framesDropped = 7;
    report.files = {L"out/frame.png", L"out/capture.avi"};
    return report;
}

TEST(SummaryTest, HasOneNameAndValueOnEachLine)
{
    EXPECT_EQ(SummaryText(Report()), "--- summary ---\n"
                                     "camera: 127.0.0.1 (Maker Model)\n"
                                     "format: RGB24 640 x 480\n"
                                     "frames delivered: 4\n"
                                     "frames per second: 25.00\n"
                                     "frames dropped: 7\n"
                                     "zero frames: 1\n"
                                     "files written: out/frame.png, out/capture.avi\n");
}

TEST(SummaryTest, SaysWhatIsNotKnown)
{
    GrabReport report = Report();
    report.framesDropped.reset();
    report.files.clear();

    EXPECT_THAT(SummaryText(report), HasSubstr("frames dropped: not counted\n"));
    EXPECT_THAT(SummaryText(report), HasSubstr("files written: none\n"));
}

TEST(SummaryTest, ShortensALongListOfFiles)
{
    GrabReport report = Report();
    report.files.assign(100, L"x.png");

    EXPECT_THAT(SummaryText(report), HasSubstr("x.png, x.png, x.png, x.png and 96 more\n"));
}

TEST(SummaryTest, TellsOfPicturesLostToASlowDiskOnlyWhenThereAreAny)
{
    GrabReport report = Report();
    EXPECT_THAT(SummaryText(report), Not(HasSubstr("not written")));

    report.recording.skippedPictures = 2;
    EXPECT_THAT(SummaryText(report), HasSubstr("pictures not written: 2"));
}

} // namespace
} // namespace vxgrab
