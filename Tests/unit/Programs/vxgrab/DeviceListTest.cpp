#include "vxgrab/DeviceList.h"

#include <gmock/gmock.h>

namespace vxgrab {
namespace {

using testing::HasSubstr;

CaptureDevice Device(const char* name, const char* displayName, bool isOurs = false)
{
    CaptureDevice device;
    device.friendlyName = name;
    device.displayName = displayName;
    device.isOurs = isOurs;
    return device;
}

std::vector<CaptureDevice> ThreeDevices()
{
    std::vector<CaptureDevice> devices;
    devices.push_back(Device("Webcam", "@device:pnp:1"));
    devices.push_back(Device("Webcam", "@device:pnp:2"));
    devices.push_back(Device("Vexa DirectShow Source", "@device:sw:3", true));
    return devices;
}

VxError ErrorFor(const char* wish)
{
    return ChooseDevice(ThreeDevices(), wish).Result().Code();
}

TEST(ChooseDeviceTest, TakesOursWhenNothingIsNamed)
{
    EXPECT_EQ(ChooseDevice(ThreeDevices(), "").ValueOr(99), 2u);
}

TEST(ChooseDeviceTest, SaysHowToRegisterOursWhenItIsNotThere)
{
    const auto chosen = ChooseDevice({}, "");

    ASSERT_FALSE(chosen);
    EXPECT_EQ(chosen.Error().Code(), VxError::NotFound);
    EXPECT_THAT(chosen.Error().GetDescription().Narrow(), HasSubstr("regsvr32 VxDSSource.dll"));
}

TEST(ChooseDeviceTest, TakesANumberOfTheList)
{
    EXPECT_EQ(ChooseDevice(ThreeDevices(), "1").ValueOr(99), 1u);
    EXPECT_EQ(ErrorFor("3"), VxError::InvalidParameter);
    EXPECT_EQ(ErrorFor("-1"), VxError::InvalidParameter);
}

TEST(ChooseDeviceTest, TakesANameOrAPartOfItInAnyCase)
{
    EXPECT_EQ(ChooseDevice(ThreeDevices(), "Vexa DirectShow Source").ValueOr(99), 2u);
    EXPECT_EQ(ChooseDevice(ThreeDevices(), "vexa").ValueOr(99), 2u);
}

TEST(ChooseDeviceTest, RefusesANameThatFitsTwoAndListsThem)
{
    const auto chosen = ChooseDevice(ThreeDevices(), "Webcam");

    ASSERT_FALSE(chosen);
    EXPECT_EQ(chosen.Error().Code(), VxError::InvalidParameter);
    EXPECT_THAT(chosen.Error().GetDescription().Narrow(), HasSubstr("0  Webcam\n  1  Webcam"));
}

TEST(ChooseDeviceTest, TellsTwoDevicesOfOneNameApartByTheirDisplayNames)
{
    EXPECT_EQ(ChooseDevice(ThreeDevices(), "@device:pnp:2").ValueOr(99), 1u);
}

TEST(ChooseDeviceTest, RefusesANameThatNobodyHas)
{
    EXPECT_EQ(ErrorFor("telescope"), VxError::InvalidParameter);
}

TEST(DescribeDevicesTest, MarksOursWithAStar)
{
    EXPECT_THAT(DescribeDevices(ThreeDevices()), HasSubstr("* 2  Vexa DirectShow Source\n"));
    EXPECT_THAT(DescribeDevices(ThreeDevices()), HasSubstr("  0  Webcam\n"));
}

} // namespace
} // namespace vxgrab
