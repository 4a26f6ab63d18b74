#include "VxDSSource/Utils/MediaTypeNames.h"

#include "PublishedGuids.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <set>
#include <span>
#include <string>

namespace {

GUID GuidOf(const wchar_t* text)
{
    GUID id{};
    EXPECT_EQ(::CLSIDFromString(text, &id), S_OK);
    return id;
}

void ExpectExactly(std::span<const vxds::NamedGuid> table, std::span<const PublishedGuid> published)
{
    EXPECT_EQ(table.size(), published.size());
    for (const PublishedGuid& each : published)
        EXPECT_STREQ(vxds::NameIn(table, GuidOf(each.id)), each.name);
}

std::set<std::string> NamesOf(std::span<const vxds::NamedGuid> table)
{
    std::set<std::string> names;
    for (const vxds::NamedGuid& row : table)
        names.insert(row.name);
    return names;
}

TEST(MediaTypeNamesTest, NamesTheMajorTypes)
{
    ExpectExactly(vxds::MajorTypeNames(), kMajorTypes);
    EXPECT_EQ(NamesOf(vxds::MajorTypeNames()).size(), 16u);
}

TEST(MediaTypeNamesTest, NamesTheSubtypes)
{
    ExpectExactly(vxds::SubtypeNames(), kSubtypes);
    EXPECT_EQ(NamesOf(vxds::SubtypeNames()).size(), 82u);
}

TEST(MediaTypeNamesTest, NamesTheFormatTypes)
{
    ExpectExactly(vxds::FormatTypeNames(), kFormatTypes);
    EXPECT_EQ(NamesOf(vxds::FormatTypeNames()).size(), 8u);
}

TEST(MediaTypeNamesTest, ComparesAllBytes)
{
    GUID id = GuidOf(kMajorTypes[0].id);
    id.Data4[7] ^= 1;

    EXPECT_EQ(vxds::NameIn(vxds::MajorTypeNames(), id), nullptr);
    EXPECT_EQ(vxds::NameIn(vxds::MajorTypeNames(), GUID{}), nullptr);
}

} // namespace
