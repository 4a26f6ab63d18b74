#include "vxgrab/CommandLine.h"

#include <gmock/gmock.h>

namespace vxgrab {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

Options Read(const std::vector<std::string>& arguments)
{
    const CommandLineResult result = ReadCommandLine(arguments);
    EXPECT_TRUE(result.options.has_value()) << result.text;
    return result.options.value_or(Options{});
}

std::string ComplaintAbout(const std::vector<std::string>& arguments)
{
    const CommandLineResult result = ReadCommandLine(arguments);
    EXPECT_FALSE(result.options.has_value());
    EXPECT_EQ(result.exitCode, 2);
    return result.text;
}

TEST(CommandLineTest, WithoutArgumentsGrabsFiveSecondsAndSumsUp)
{
    const Options options = Read({});

    EXPECT_TRUE(options.isGrabWanted);
    EXPECT_TRUE(options.isSummaryWanted);
    EXPECT_EQ(options.duration, 5s);
    EXPECT_EQ(options.frames, 0u);
    EXPECT_TRUE(options.settings.IsEmpty());
}

TEST(CommandLineTest, APngAloneMeansOnePicture)
{
    const Options options = Read({"--png", "a.png"});

    EXPECT_EQ(options.frames, 1u);
    EXPECT_FALSE(options.duration.has_value());
    EXPECT_FALSE(options.isSummaryWanted);
}

TEST(CommandLineTest, ListingOrFeaturesAloneGrabNothing)
{
    EXPECT_FALSE(Read({"--list"}).isGrabWanted);
    EXPECT_FALSE(Read({"--get", "Width"}).isGrabWanted);
    EXPECT_FALSE(Read({"--set", "Width=64"}).isGrabWanted);
    EXPECT_FALSE(Read({"--features"}).isGrabWanted);
    EXPECT_FALSE(Read({"--properties"}).isGrabWanted);
    EXPECT_FALSE(Read({"--save-default"}).isGrabWanted);
    EXPECT_FALSE(Read({"--clear-default"}).isGrabWanted);
    EXPECT_TRUE(Read({"--set", "Width=64", "--png", "a.png"}).isGrabWanted);
}

TEST(CommandLineTest, PropertyPagesAreShownOnRequestOnly)
{
    EXPECT_FALSE(Read({}).arePagesWanted);
    EXPECT_TRUE(Read({"--properties"}).arePagesWanted);
    EXPECT_TRUE(Read({"--properties", "--png", "a.png"}).isGrabWanted);
}

TEST(CommandLineTest, ReadsEverySettingOfTheFilter)
{
    const FilterSettings settings = Read({"--device-id",      "192.168.0.10",
                                          "--role",           "multicast",
                                          "--unicast-port",   "5000",
                                          "--multicast-ip",   "239.1.2.3",
                                          "--multicast-port", "1042",
                                          "--source",         "Source1",
                                          "--channel",        "1",
                                          "--buffer-count",   "32",
                                          "--buffer-size",    "1000000",
                                          "--drop-threshold", "0",
                                          "--pixel-type",     "yuv",
                                          "--kernel",         "5",
                                          "--zoom",           "9",
                                          "--output-size",    "640x480",
                                          "--diagnostics"})
                                        .settings;

    EXPECT_EQ(settings.deviceId, "192.168.0.10");
    EXPECT_EQ(settings.role, 2u);
    EXPECT_EQ(settings.unicastPort, 5000u);
    EXPECT_EQ(settings.multicastAddress, "239.1.2.3");
    EXPECT_EQ(settings.multicastPort, 1042u);
    EXPECT_EQ(settings.source, "Source1");
    EXPECT_EQ(settings.channel, 1u);
    EXPECT_EQ(settings.bufferCount, 32u);
    EXPECT_EQ(settings.bufferBytes, 1000000u);
    EXPECT_EQ(settings.dropThreshold, 0u);
    EXPECT_EQ(settings.pixelType, 1u);
    EXPECT_EQ(settings.kernelSize, 5);
    EXPECT_EQ(settings.zoom, 9);
    EXPECT_EQ(settings.outputWidthPx, 640);
    EXPECT_EQ(settings.outputHeightPx, 480);
    EXPECT_EQ(settings.diagnostics, true);
}

TEST(CommandLineTest, DiagnosticsCanBeSwitchedOffAndLeftAlone)
{
    EXPECT_EQ(Read({"--no-diagnostics"}).settings.diagnostics, false);
    EXPECT_FALSE(Read({"--list"}).settings.diagnostics.has_value());
}

TEST(CommandLineTest, SplitsAssignmentsAtTheFirstEqualsSign)
{
    const auto& assignments =
        Read({"--set", "Gain=4", "--set", "DeviceUserID=a=b", "--set", "Empty="}).features.assignments;

    ASSERT_EQ(assignments.size(), 3u);
    EXPECT_EQ(assignments[0].name, "Gain");
    EXPECT_EQ(assignments[0].value, "4");
    EXPECT_EQ(assignments[1].value, "a=b");
    EXPECT_EQ(assignments[2].value, "");
}

TEST(CommandLineTest, CollectsQueriesInOrder)
{
    EXPECT_THAT(Read({"--get", "Width", "--get", "Height"}).features.queries, ElementsAre("Width", "Height"));
}

TEST(CommandLineTest, KeepsFileNamesOfEveryScript)
{
    EXPECT_EQ(Read({"--png", "\xd0\xba\xd0\xb0\xd0\xb4\xd1\x80.png"}).pngFile.wstring(),
              L"\u043a\u0430\u0434\u0440.png");
}

TEST(CommandLineTest, ReadsTimesAsFractionsOfSeconds)
{
    const Options options = Read({"--seconds", "2.5", "--timeout", "0.75"});

    EXPECT_EQ(options.duration, 2500ms);
    EXPECT_EQ(options.patience, 750ms);
}

TEST(CommandLineTest, NamesWhatIsWrongAndWhatWouldBeRight)
{
    EXPECT_THAT(ComplaintAbout({"--role", "boss"}), HasSubstr("controller (0), multicast (2), unicast (1)"));
    EXPECT_THAT(ComplaintAbout({"--output-size", "640"}), HasSubstr("for instance 640x480"));
    EXPECT_THAT(ComplaintAbout({"--set", "Gain"}), HasSubstr("for instance Gain=4"));
    EXPECT_THAT(ComplaintAbout({"--kernel", "4"}), HasSubstr("--kernel"));
}

TEST(CommandLineTest, RejectsNumbersThatCannotBeMeant)
{
    for (const char* size : {"0x480", "640x0", "-1x480", "640x480x3", "640x480 "})
        EXPECT_THAT(ComplaintAbout({"--output-size", size}), HasSubstr(size));
    ComplaintAbout({"--unicast-port", "65536"});
    ComplaintAbout({"--multicast-ip", "239.1.2"});
    ComplaintAbout({"--zoom", "10"});
    ComplaintAbout({"--frames", "0"});
    ComplaintAbout({"--frames", "-1"});
    ComplaintAbout({"--seconds", "0"});
    ComplaintAbout({"--subtype", "mjpg"});
}

TEST(CommandLineTest, RejectsWhatDoesNotGoTogether)
{
    ComplaintAbout({"--dll", "a.dll", "--device", "1"});
    ComplaintAbout({"--png-every", "3"});
}

TEST(CommandLineTest, HelpIsAnAnswerAndNoError)
{
    const CommandLineResult result = ReadCommandLine({"--help"});

    EXPECT_FALSE(result.options.has_value());
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.text, HasSubstr("Exit codes:"));
}

} // namespace
} // namespace vxgrab
