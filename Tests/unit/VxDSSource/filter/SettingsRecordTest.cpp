#include "VxDSSource/filter/SettingsRecord.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace vxds {
namespace {

TEST(SettingsRecordTest, StartsWithTheDefaults)
{
    const SettingsRecord settings;

    EXPECT_EQ(settings.Number(Setting::Role), 0u);
    EXPECT_EQ(settings.Number(Setting::UnicastPort), 0u);
    EXPECT_EQ(settings.Text(Setting::MulticastAddress), L"239.192.1.1");
    EXPECT_EQ(settings.Number(Setting::MulticastPort), 1042u);
    EXPECT_FALSE(settings.Flag(Setting::DiagnosticsEnabled));
    EXPECT_EQ(settings.Text(Setting::DeviceId), L"");
    EXPECT_EQ(settings.Text(Setting::ParamSource), L"");
    EXPECT_EQ(settings.Number(Setting::ParamChannel), 0u);
    EXPECT_EQ(settings.Number(Setting::BufferCount), 16u);
    EXPECT_EQ(settings.Number(Setting::DefaultBufferSize), 4147200u);
    EXPECT_EQ(settings.Number(Setting::DropThreshold), 1u);
    EXPECT_EQ(settings.Number(Setting::Width), 1280u);
    EXPECT_EQ(settings.Number(Setting::Height), 720u);
    EXPECT_EQ(settings.Number(Setting::OutputPixelType), 0u);
    EXPECT_EQ(settings.SignedNumber(Setting::KernelSize), 0);
    EXPECT_EQ(settings.SignedNumber(Setting::ZoomValue), 0);
    EXPECT_EQ(settings.SignedNumber(Setting::OutputWidth), 0);
    EXPECT_EQ(settings.SignedNumber(Setting::OutputHeight), 0);
}

TEST(SettingsRecordTest, AcceptsTheKernelSizesOfTheMedianOnly)
{
    SettingsRecord settings;
    for (const std::int32_t size : {3, 5, 0}) {
        EXPECT_TRUE(settings.Set(Setting::KernelSize, size)) << size;
        EXPECT_EQ(settings.SignedNumber(Setting::KernelSize), size);
    }
    ASSERT_TRUE(settings.Set(Setting::KernelSize, 5));

    for (const std::int32_t size : {1, 2, 4, 6, 7, 9, -1, -3, std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_FALSE(settings.Set(Setting::KernelSize, size)) << size;
        EXPECT_EQ(settings.SignedNumber(Setting::KernelSize), 5) << size;
    }
}

TEST(SettingsRecordTest, AcceptsTheTwoOutputPixelTypesOnly)
{
    SettingsRecord settings;
    EXPECT_TRUE(settings.Set(Setting::OutputPixelType, 1));

    EXPECT_FALSE(settings.Set(Setting::OutputPixelType, 2));
    EXPECT_FALSE(settings.Set(Setting::OutputPixelType, -1));

    EXPECT_EQ(settings.Number(Setting::OutputPixelType), 1u);
    EXPECT_TRUE(settings.Set(Setting::OutputPixelType, 0));
    EXPECT_EQ(settings.Number(Setting::OutputPixelType), 0u);
}

TEST(SettingsRecordTest, StoresALargeZoomAsTenAndHasNoLowerBound)
{
    SettingsRecord settings;

    for (const auto& [given, stored] : {std::pair{11, 10},
                                        {25, 10},
                                        {10, 10},
                                        {9, 9},
                                        {0, 0},
                                        {-3, -3},
                                        {std::numeric_limits<std::int32_t>::max(), 10}}) {
        EXPECT_TRUE(settings.Set(Setting::ZoomValue, given));
        EXPECT_EQ(settings.SignedNumber(Setting::ZoomValue), stored) << given;
    }
}

TEST(SettingsRecordTest, RefusesAnOutputSizeBelowOneAndKeepsTheOldOne)
{
    SettingsRecord settings;
    ASSERT_TRUE(settings.SetOutputSize(640, 480));

    for (const auto& [width, height] : {std::pair{0, 480}, {640, 0}, {-1, 480}, {640, -480}, {0, 0}})
        EXPECT_FALSE(settings.SetOutputSize(width, height)) << width << " x " << height;

    EXPECT_EQ(settings.SignedNumber(Setting::OutputWidth), 640);
    EXPECT_EQ(settings.SignedNumber(Setting::OutputHeight), 480);
    EXPECT_TRUE(settings.SetOutputSize(1, 1));
    EXPECT_EQ(settings.SignedNumber(Setting::OutputWidth), 1);
}

TEST(SettingsRecordTest, HasNoSetterForWhatFollowsTheOutput)
{
    SettingsRecord settings;

    EXPECT_FALSE(settings.Set(Setting::Width, 640));
    EXPECT_FALSE(settings.Set(Setting::Height, 480));

    EXPECT_EQ(settings.Number(Setting::Width), 1280u);
    EXPECT_EQ(settings.Number(Setting::Height), 720u);
}

TEST(SettingsRecordTest, StoresEveryValueOfAPlainNumber)
{
    SettingsRecord settings;

    EXPECT_TRUE(settings.Set(Setting::Role, 5));
    EXPECT_TRUE(settings.Set(Setting::BufferCount, -1));

    EXPECT_EQ(settings.Number(Setting::Role), 5u);
    EXPECT_EQ(settings.Number(Setting::BufferCount), 4294967295u);
}

TEST(SettingsRecordTest, MakesEveryNonZeroFlagOne)
{
    SettingsRecord settings;

    settings.Store(Setting::DiagnosticsEnabled, 0x80000000u);

    EXPECT_EQ(settings.Number(Setting::DiagnosticsEnabled), 1u);
}

TEST(SettingsRecordTest, WritesLargeUnsignedNumbersWithAMinusSignAndReadsThemBack)
{
    SettingsRecord settings;
    settings.Store(Setting::BufferCount, 4294967295u);

    const VxString text = settings.ToText(Setting::BufferCount);
    SettingsRecord restored;
    restored.FromText(Setting::BufferCount, text);

    EXPECT_EQ(text.Narrow(), "-1");
    EXPECT_EQ(restored.Number(Setting::BufferCount), 4294967295u);
}

TEST(SettingsRecordTest, WritesFlagsAsWordsAndTextsAsTheyAre)
{
    SettingsRecord settings;
    settings.Store(Setting::DeviceId, std::wstring(L"caméra <1> & \x4E2D"));

    EXPECT_EQ(settings.ToText(Setting::DiagnosticsEnabled).Narrow(), "false");
    settings.Store(Setting::DiagnosticsEnabled, 1u);
    EXPECT_EQ(settings.ToText(Setting::DiagnosticsEnabled).Narrow(), "true");
    EXPECT_EQ(settings.ToText(Setting::DeviceId).Wide(), L"caméra <1> & \x4E2D");
}

TEST(SettingsRecordTest, ReadsAFlagAsTrueFromOneWordOnly)
{
    SettingsRecord settings;

    for (const char* text : {"TRUE", "True", "1", "yes", " true", "true ", ""}) {
        settings.Store(Setting::DiagnosticsEnabled, 1u);
        settings.FromText(Setting::DiagnosticsEnabled, text);
        EXPECT_FALSE(settings.Flag(Setting::DiagnosticsEnabled)) << text;
    }
    settings.FromText(Setting::DiagnosticsEnabled, "true");
    EXPECT_TRUE(settings.Flag(Setting::DiagnosticsEnabled));
}

TEST(SettingsRecordTest, ReadsNumbersLikeAStream)
{
    struct Case {
        const char* text;
        std::int32_t expected;
    };
    for (const Case& each : {Case{"42", 42}, Case{"  42", 42}, Case{"-7", -7}, Case{"12abc", 12},
                             Case{"1,5", 1}, Case{"abc", 0}, Case{"0x10", 0}, Case{"99999999999", 2147483647},
                             Case{"-99999999999", std::numeric_limits<std::int32_t>::min()}, Case{"", 77}}) {
        SettingsRecord settings;
        settings.Store(Setting::DropThreshold, 77u);
        settings.FromText(Setting::DropThreshold, each.text);
        EXPECT_EQ(settings.SignedNumber(Setting::DropThreshold), each.expected) << '"' << each.text << '"';
    }
}

TEST(SettingsRecordTest, GivesBackEveryValueThroughItsText)
{
    SettingsRecord settings;
    std::uint32_t number = 0x9E3779B9u;
    for (const SettingRow& row : kSettingRows) {
        number = number * 2654435761u + 1;
        if (row.type == SettingType::Text)
            settings.Store(row.setting, std::wstring(L"text of ") + std::to_wstring(number));
        else
            settings.Store(row.setting, number);
    }

    SettingsRecord restored;
    for (const SettingRow& row : kSettingRows)
        restored.FromText(row.setting, settings.ToText(row.setting));

    for (const SettingRow& row : kSettingRows) {
        EXPECT_EQ(restored.Number(row.setting), settings.Number(row.setting)) << row.key;
        EXPECT_EQ(restored.Text(row.setting), settings.Text(row.setting)) << row.key;
    }
}

} // namespace
} // namespace vxds
