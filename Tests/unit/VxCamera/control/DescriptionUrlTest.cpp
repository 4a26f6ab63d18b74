#include "VxCamera/control/DescriptionUrl.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace control {
namespace {

using Place = DescriptionUrl::Place;

TEST(DescriptionUrlTest, ReadsNameAddressAndLengthInHexadecimal)
{
    const auto url = ParseDescriptionUrl("Local:camera.xml;10000;A1F");

    ASSERT_TRUE(url);
    EXPECT_EQ(*url, (DescriptionUrl{Place::Device, "camera.xml", 0x10000, 0xA1F}));
}

TEST(DescriptionUrlTest, AcceptsWhatCamerasReallyWrite)
{
    const DescriptionUrl expected{Place::Device, "camera.xml", 0x10000, 0xA1F};
    for (const char* text :
         {"  Local:camera.xml;10000;A1F", "local:camera.xml;10000;a1f", "LOCAL:camera.xml;0x10000;0XA1F",
          "Local:///camera.xml;10000;A1F", "Local:camera.xml;10000;A1F?SchemaVersion=1.1.0",
          "Local:camera.xml; 10000 ; A1F \r\n", "Local:camera.xml;10000;A1F;"}) {
        const auto url = ParseDescriptionUrl(text);
        ASSERT_TRUE(url) << text;
        EXPECT_EQ(*url, expected) << text;
    }
}

TEST(DescriptionUrlTest, EndsAtTheFirstNul)
{
    EXPECT_TRUE(ParseDescriptionUrl(std::string_view("Local:a.xml;1;2\0junk;;;", 23)));
}

TEST(DescriptionUrlTest, TellsOtherPlacesApart)
{
    EXPECT_EQ(ParseDescriptionUrl("File:///C:/camera.xml")->place, Place::File);
    EXPECT_EQ(ParseDescriptionUrl("http://example.org/camera.xml")->place, Place::Http);
    EXPECT_EQ(ParseDescriptionUrl("http://example.org/camera.xml")->name, "http://example.org/camera.xml");
}

TEST(DescriptionUrlTest, RejectsWhatIsNoUrl)
{
    EXPECT_EQ(bytes::ErrorOf(ParseDescriptionUrl("")), VxError::NotFound);
    EXPECT_EQ(bytes::ErrorOf(ParseDescriptionUrl("   ")), VxError::NotFound);
    for (const char* text :
         {"camera.xml", "ftp:camera.xml", "Local:", "Local:camera.xml", "Local:camera.xml;10000",
          "Local:camera.xml;10000;", "Local:camera.xml;;10", "Local:camera.xml;xyz;10",
          "Local:camera.xml;100000000;10", "Local:camera.xml;-1;10", "Local:camera.xml;10 20;10"})
        EXPECT_EQ(bytes::ErrorOf(ParseDescriptionUrl(text)), VxError::InvalidData) << text;
}

} // namespace
} // namespace control
