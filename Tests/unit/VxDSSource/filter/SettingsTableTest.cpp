#include "VxDSSource/filter/SettingsTable.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace vxds {
namespace {

TEST(SettingsTableTest, ListsTheSettingsInTheOrderOfConfigurations)
{
    const std::vector<std::string> expected = {
        "role",          "unicastport", "multicastip",  "multicastport",   "diagnosticsenabled",
        "deviceid",      "paramsource", "paramchannel", "buffercount",     "defaultbuffersize",
        "dropthreshold", "width",       "height",       "outputpixeltype", "kernelsize",
        "zoomvalue",     "outputwidth", "outputheight"};

    std::vector<std::string> keys;
    for (const SettingRow& row : kSettingRows)
        keys.emplace_back(row.key);

    EXPECT_EQ(keys, expected);
}

TEST(SettingsTableTest, HasEachSettingInTheRowOfItsNumber)
{
    for (std::size_t index = 0; index < kSettingCount; ++index)
        EXPECT_EQ(kSettingRows[index].setting, static_cast<Setting>(index)) << kSettingRows[index].key;
}

TEST(SettingsTableTest, FindsTheRowOfASetting)
{
    EXPECT_STREQ(RowOf(Setting::DropThreshold).key, "dropthreshold");
    EXPECT_STREQ(RowOf(Setting::OutputHeight).key, "outputheight");
}

} // namespace
} // namespace vxds
