#include "vxsim/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace vxsim;
using testing::HasSubstr;
using transport::Ipv4Address;

VxExpected<CommandLine> Parse(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "vxsim");
    return ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

std::string WhatIsWrong(const std::vector<const char*>& arguments)
{
    const auto parsed = Parse(arguments);
    EXPECT_FALSE(parsed);
    if (parsed)
        return {};
    EXPECT_EQ(parsed.Error().Code(), VxError::InvalidParameter);
    return parsed.Error().GetDescription().Narrow();
}

TEST(CommandLineTest, WithoutArgumentsItIsACameraOnLoopback)
{
    const auto parsed = Parse({});

    ASSERT_TRUE(parsed);
    EXPECT_FALSE(parsed->helpText);
    EXPECT_EQ(parsed->talk, Talk::Quiet);
    EXPECT_EQ(parsed->camera.address, Ipv4Address::Loopback());
    EXPECT_EQ(parsed->camera.controlPort, 3956);
    EXPECT_EQ(parsed->camera.pixelFormat, 0x01080001u);
    EXPECT_TRUE(parsed->camera.hasSources);
    EXPECT_FALSE(parsed->camera.mac);
    EXPECT_FALSE(parsed->camera.frameLimit);
    EXPECT_FALSE(parsed->camera.isSendingRuns);
    EXPECT_FALSE(parsed->camera.faults.vanishAfterFrames);
}

TEST(CommandLineTest, TakesThePicturesSettings)
{
    const auto parsed =
        Parse({"--address", "127.0.0.3", "--port", "4000", "--width", "1280", "--height", "720", "--format",
               "BayerRG8", "--fps", "29.97", "--link-speed", "10000", "--send-runs", "--frames", "5"});

    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->camera.address, Ipv4Address(127, 0, 0, 3));
    EXPECT_EQ(parsed->camera.controlPort, 4000);
    EXPECT_EQ(parsed->camera.widthPx, 1280u);
    EXPECT_EQ(parsed->camera.heightPx, 720u);
    EXPECT_EQ(parsed->camera.pixelFormat, 0x01080009u);
    EXPECT_EQ(parsed->camera.frameRateHz, 29.97);
    EXPECT_EQ(parsed->camera.linkSpeedMbps, 10000u);
    EXPECT_TRUE(parsed->camera.isSendingRuns);
    EXPECT_EQ(parsed->camera.frameLimit, 5u);
}

TEST(CommandLineTest, TakesTheCamerasIdentity)
{
    const auto parsed = Parse({"--mac", "00:1a:2B:3c:4D:5e", "--serial", "S-1", "--name", "left", "--model",
                               "M 2", "--no-source-selector", "--verbose"});

    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->camera.mac, (std::array<std::uint8_t, 6>{0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E}));
    EXPECT_EQ(parsed->camera.serialNumber, "S-1");
    EXPECT_EQ(parsed->camera.userDefinedName, "left");
    EXPECT_EQ(parsed->camera.modelName, "M 2");
    EXPECT_FALSE(parsed->camera.hasSources);
    EXPECT_EQ(parsed->talk, Talk::Verbose);
}

TEST(CommandLineTest, TakesFaults)
{
    const auto parsed = Parse({"--drop", "0.1", "--duplicate", "0.2", "--reorder", "0.3", "--delay", "0.4",
                               "--seed", "9", "--vanish-after", "100", "--largest-packet", "1500"});

    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->camera.faults.dropShare, 0.1);
    EXPECT_EQ(parsed->camera.faults.duplicateShare, 0.2);
    EXPECT_EQ(parsed->camera.faults.reorderShare, 0.3);
    EXPECT_EQ(parsed->camera.faults.delayShare, 0.4);
    EXPECT_EQ(parsed->camera.faults.seed, 9u);
    EXPECT_EQ(parsed->camera.faults.vanishAfterFrames, 100u);
    EXPECT_EQ(parsed->camera.faults.largestPacketBytes, 1500u);
}

TEST(CommandLineTest, AMacMayBeWrittenWithHyphens)
{
    const auto parsed = Parse({"--mac", "00-11-22-33-44-55"});

    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->camera.mac, (std::array<std::uint8_t, 6>{0x00, 0x11, 0x22, 0x33, 0x44, 0x55}));
}

TEST(CommandLineTest, NamesWhatIsWrong)
{
    EXPECT_THAT(WhatIsWrong({"--address", "localhost"}), HasSubstr("'localhost' is no IPv4 address"));
    EXPECT_THAT(WhatIsWrong({"--format", "Mono10"}), HasSubstr("'Mono10' is no format of this camera"));
    EXPECT_THAT(WhatIsWrong({"--port", "65536"}), HasSubstr("--port"));
    EXPECT_THAT(WhatIsWrong({"--width", "wide"}), HasSubstr("--width"));
    EXPECT_THAT(WhatIsWrong({"--width", "-4"}), HasSubstr("--width"));
    EXPECT_THAT(WhatIsWrong({"--fps"}), HasSubstr("--fps"));
    EXPECT_THAT(WhatIsWrong({"--unknown"}), HasSubstr("--unknown"));
    EXPECT_THAT(WhatIsWrong({"surplus"}), HasSubstr("surplus"));
}

TEST(CommandLineTest, RejectsWhatIsNoMac)
{
    for (const char* text :
         {"00:11:22:33:44", "00:11:22:33:44:5", "00:11:22:33:44:5g", "00:11:22:33:44:55:66", "001122334455",
          "00.11.22.33.44.55", "0x:11:22:33:44:55", "+1:11:22:33:44:55"})
        EXPECT_THAT(WhatIsWrong({"--mac", text}), HasSubstr("is no MAC address")) << text;
}

TEST(CommandLineTest, GivesHelp)
{
    for (const char* option : {"--help", "-h"}) {
        const auto parsed = Parse({option});

        ASSERT_TRUE(parsed);
        ASSERT_TRUE(parsed->helpText);
        EXPECT_THAT(*parsed->helpText, HasSubstr("--address"));
        EXPECT_THAT(*parsed->helpText, HasSubstr("YUV422_8_UYVY"));
        EXPECT_THAT(*parsed->helpText, HasSubstr("Example:"));
    }
}

TEST(CommandLineTest, TakesWhatGoesWrongWithCommands)
{
    const auto parsed =
        Parse({"--drop-commands", "0.1", "--drop-answers", "0.2", "--answer-delay", "300", "--pending",
               "1500", "--refuse", "0xA108", "--answer-length", "-4", "--description-length", "1000",
               "--reboot-after", "7", "--no-test-packets", "--description-size", "1000000"});

    ASSERT_TRUE(parsed);
    const VxSimulatorFaults& faults = parsed->camera.faults;
    EXPECT_EQ(faults.dropCommandShare, 0.1);
    EXPECT_EQ(faults.dropAnswerShare, 0.2);
    EXPECT_EQ(faults.answerDelay, std::chrono::milliseconds(300));
    EXPECT_EQ(faults.pendingTime, std::chrono::milliseconds(1500));
    EXPECT_EQ(faults.refusedAddress, 0xA108u);
    EXPECT_EQ(faults.answerLengthError, -4);
    EXPECT_EQ(faults.descriptionLengthError, 1000);
    EXPECT_EQ(faults.rebootAfterFrames, 7u);
    EXPECT_FALSE(parsed->camera.hasTestPackets);
    EXPECT_EQ(parsed->camera.descriptionBytes, 1'000'000u);
}

TEST(CommandLineTest, SaysWhatIsNoRegisterAddress)
{
    EXPECT_THAT(WhatIsWrong({"--refuse", "Width"}), HasSubstr("'Width' is no register address"));
    EXPECT_THAT(WhatIsWrong({"--refuse", "0x"}), HasSubstr("no register address"));
    EXPECT_THAT(WhatIsWrong({"--refuse", "1A2B3C4D5"}), HasSubstr("no register address"));
}

} // namespace
