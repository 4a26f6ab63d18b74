#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include <gtest/gtest.h>

namespace {

using namespace bootstrap;

TEST(BootstrapRegistersTest, StreamChannelsFollowAtEqualSteps)
{
    EXPECT_EQ(StreamChannelRegister(kStreamChannelPort, 0), 0x0D00u);
    EXPECT_EQ(StreamChannelRegister(kStreamChannelPort, 1), 0x0D40u);
    EXPECT_EQ(StreamChannelRegister(kStreamChannelDestination, 2), 0x0D98u);
}

TEST(BootstrapRegistersTest, TextsFillTheirPlaceUpToTheNextRegister)
{
    EXPECT_EQ(kManufacturerName + kManufacturerNameBytes, kModelName);
    EXPECT_EQ(kModelName + kModelNameBytes, kDeviceVersion);
    EXPECT_EQ(kDeviceVersion + kDeviceVersionBytes, kManufacturerInfo);
    EXPECT_EQ(kManufacturerInfo + kManufacturerInfoBytes, kSerialNumber);
    EXPECT_EQ(kSerialNumber + kSerialNumberBytes, kUserDefinedName);
    EXPECT_EQ(kUserDefinedName + kUserDefinedNameBytes, 0x00F8u);
    EXPECT_EQ(kFirstUrl + kUrlBytes, kSecondUrl);
}

} // namespace
