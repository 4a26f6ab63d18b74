#include "VxSimulator/CheckOptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using simulator::CheckOptions;
using testing::HasSubstr;
using transport::Ipv4Address;

std::string WhatIsWrong(const VxSimulatorOptions& options)
{
    const auto checked = CheckOptions(options);
    EXPECT_EQ(checked.IsOK() ? VxError::Ok : VxError::InvalidParameter, checked.Code());
    return checked.GetDescription().Narrow();
}

TEST(CheckOptionsTest, TheDefaultsAreGood)
{
    EXPECT_TRUE(CheckOptions({}).IsOK());
}

TEST(CheckOptionsTest, SizesHaveLimitsAndSteps)
{
    for (const std::uint32_t width : {0u, 124u, 130u, 16388u}) {
        VxSimulatorOptions options;
        options.widthPx = width;
        EXPECT_THAT(WhatIsWrong(options), HasSubstr("the width is " + std::to_string(width)));
    }
    for (const std::uint32_t height : {0u, 62u, 65u, 16386u}) {
        VxSimulatorOptions options;
        options.heightPx = height;
        EXPECT_THAT(WhatIsWrong(options), HasSubstr("the height is " + std::to_string(height)));
    }
    VxSimulatorOptions options;
    options.widthPx = 128;
    options.heightPx = 64;
    EXPECT_TRUE(CheckOptions(options).IsOK());
    options.widthPx = options.heightPx = 16384;
    EXPECT_TRUE(CheckOptions(options).IsOK());
}

TEST(CheckOptionsTest, TheFormatMustBeOneOfTheCamera)
{
    VxSimulatorOptions options;
    options.pixelFormat = 0x01100003;
    EXPECT_THAT(WhatIsWrong(options), HasSubstr("pixel format"));
}

TEST(CheckOptionsTest, TheFrameRateHasLimits)
{
    for (const double rate : {0.0, -1.0, 0.09, 1001.0, std::numeric_limits<double>::quiet_NaN()}) {
        VxSimulatorOptions options;
        options.frameRateHz = rate;
        EXPECT_THAT(WhatIsWrong(options), HasSubstr("frame rate")) << rate;
    }
}

TEST(CheckOptionsTest, TheLinkMustCarrySomething)
{
    VxSimulatorOptions options;
    options.linkSpeedMbps = 0;
    EXPECT_THAT(WhatIsWrong(options), HasSubstr("link speed"));
}

TEST(CheckOptionsTest, TheAddressMustBeThatOfOneMachine)
{
    for (const auto address : {Ipv4Address(), Ipv4Address::LimitedBroadcast(), Ipv4Address(239, 1, 1, 1)}) {
        VxSimulatorOptions options;
        options.address = address;
        EXPECT_THAT(WhatIsWrong(options), HasSubstr(address.ToString()));
    }
}

TEST(CheckOptionsTest, TextsMustFitIntoTheirRegisters)
{
    VxSimulatorOptions options;
    options.serialNumber = "0123456789abcdef";
    options.userDefinedName = "0123456789abcdef";
    options.modelName = std::string(32, 'm');
    EXPECT_TRUE(CheckOptions(options).IsOK());

    options.modelName += 'm';
    EXPECT_THAT(WhatIsWrong(options), HasSubstr("model name has 33 bytes"));
    options.modelName.clear();
    options.serialNumber += "0";
    EXPECT_THAT(WhatIsWrong(options), HasSubstr("serial number has 17 bytes"));
    options.serialNumber.clear();
    options.userDefinedName += "0";
    EXPECT_THAT(WhatIsWrong(options), HasSubstr("user defined name has 17 bytes"));
}

TEST(CheckOptionsTest, SharesAreFromZeroToOne)
{
    VxSimulatorOptions options;
    options.faults.dropShare = 1.1;
    EXPECT_THAT(WhatIsWrong(options), HasSubstr("dropped"));
    options.faults.dropShare = 1;
    options.faults.delayShare = -0.1;
    EXPECT_THAT(WhatIsWrong(options), HasSubstr("delayed"));
}

} // namespace
