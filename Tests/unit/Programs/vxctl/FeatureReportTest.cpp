#include "vxctl/FeatureReport.h"

#include <gmock/gmock.h>

namespace vxctl {
namespace {

using testing::HasSubstr;
using testing::Not;

FeatureFacts Width()
{
    FeatureFacts feature;
    feature.name = "Width";
    feature.category = "root\\ImageFormatControl";
    feature.type = VxGenType::Integer;
    feature.isAvailable = feature.isReadable = feature.isWritable = true;
    feature.value = "640";
    feature.unit = "px";
    feature.minimum = "4";
    feature.maximum = "4096";
    feature.increment = "4";
    return feature;
}

FeatureFacts Named(const char* name, const char* category)
{
    FeatureFacts feature;
    feature.name = name;
    feature.category = category;
    feature.isAvailable = true;
    return feature;
}

TEST(AcceptedTextTest, NamesWhatIsKnownOfTheLimits)
{
    FeatureFacts feature = Width();
    EXPECT_EQ(AcceptedText(feature), "4 to 4096 in steps of 4");
    feature.increment.reset();
    EXPECT_EQ(AcceptedText(feature), "4 to 4096");
    feature.maximum.reset();
    EXPECT_EQ(AcceptedText(feature), "at least 4");
    feature.minimum.reset();
    feature.maximum = "9";
    EXPECT_EQ(AcceptedText(feature), "at most 9");
    EXPECT_EQ(AcceptedText(FeatureFacts()), "");
}

TEST(AcceptedTextTest, NamesTheEntriesOfAnEnumeration)
{
    FeatureFacts feature;
    feature.entries = {"Off", "Once"};

    EXPECT_EQ(AcceptedText(feature), "Off, Once");
}

TEST(FeatureTreeTest, PutsFeaturesBelowTheirCategories)
{
    const std::string tree =
        FeatureTree({Named("A", "root"), Named("B", "root\\One"), Named("C", "root\\One\\Two"),
                     Named("D", "root\\One"), Named("E", "root\\Three\\Four")});

    EXPECT_THAT(tree, testing::ContainsRegex("^A +-"));
    EXPECT_THAT(tree, HasSubstr("\nOne\n  B "));
    EXPECT_THAT(tree, HasSubstr("\n  Two\n    C "));
    EXPECT_THAT(tree, HasSubstr("\n  D "));
    EXPECT_THAT(tree, HasSubstr("\nThree\n  Four\n    E "));
}

TEST(FeatureTreeTest, ShowsTypeAccessValueUnitAndLimitsInOneLine)
{
    EXPECT_EQ(FeatureTree({Width()}),
              "ImageFormatControl\n"
              "  Width                              Integer      rw  640 px                       "
              "4 to 4096 in steps of 4\n");
}

TEST(FeatureTreeTest, ShortensLongValuesAndKeepsControlCharactersOut)
{
    FeatureFacts feature = Width();
    feature.unit.clear();
    feature.value = std::string(500, 'x') + "\x1B[2J";

    const std::string tree = FeatureTree({feature});

    EXPECT_LT(tree.size(), 250u);
    EXPECT_THAT(tree, Not(HasSubstr("\x1B")));
}

TEST(FeatureTreeTest, SaysWhatIsNotThereNow)
{
    FeatureFacts feature = Width();
    feature.isAvailable = false;
    EXPECT_THAT(FeatureTree({feature}), HasSubstr("(not available now)"));

    feature.isAvailable = true;
    feature.value.reset();
    feature.whyNoValue = "time-out";
    EXPECT_THAT(FeatureTree({feature}), HasSubstr("(cannot be read)"));
}

TEST(FeatureDetailsTest, ShowsOneFactALine)
{
    FeatureFacts feature = Width();
    feature.description = "Width of the picture.";
    feature.selectedBy = {"RegionSelector"};

    EXPECT_EQ(FeatureDetails(feature), "Width\n"
                                       "  value        640 px\n"
                                       "  accepted     4 to 4096 in steps of 4\n"
                                       "  access       rw\n"
                                       "  type         Integer\n"
                                       "  category     root\\ImageFormatControl\n"
                                       "  visibility   Beginner\n"
                                       "  selected by  RegionSelector\n"
                                       "  description  Width of the picture.\n");
}

TEST(FeaturesJsonTest, HoldsEverything)
{
    FeatureFacts choice = Named("Mode", "root");
    choice.entries = {"Off", "On"};

    EXPECT_EQ(
        FeaturesJson({Width(), choice}),
        "[\n {\"name\": \"Width\", \"category\": \"root\\\\ImageFormatControl\", \"type\": \"Integer\", "
        "\"visibility\": \"Beginner\", \"available\": true, \"readable\": true, \"writable\": true, "
        "\"value\": \"640\", \"unit\": \"px\", \"minimum\": \"4\", \"maximum\": \"4096\", \"increment\": "
        "\"4\"},\n"
        " {\"name\": \"Mode\", \"category\": \"root\", \"type\": \"-\", \"visibility\": \"Beginner\", "
        "\"available\": true, \"readable\": false, \"writable\": false, \"value\": null, "
        "\"entries\": [\"Off\", \"On\"]}\n]\n");
    EXPECT_EQ(FeaturesJson({}), "[]\n");
}

} // namespace
} // namespace vxctl
