#include "VxCamera/genapi/map/FeatureList.h"

#include "support/genapi/NodeMapFixture.h"

#include <gmock/gmock.h>

namespace genapi {
namespace {

using ::testing::ElementsAre;

class FeatureListTest : public NodeMapFixture {
protected:
    [[nodiscard]] std::vector<std::string> Listed() const
    {
        std::vector<std::string> lines;
        for (const Feature& feature : map->Features())
            lines.push_back(feature.category + "|" + std::string(map->Info(feature.node).name));
        return lines;
    }
};

TEST_F(FeatureListTest, WalksCategoriesDepthFirst)
{
    Load("<Category "
         "Name=\"Root\"><pFeature>Image</pFeature><pFeature>Top</pFeature><pFeature>Analog</pFeature></"
         "Category>"
         "<Integer Name=\"Top\"><Value>1</Value></Integer>"
         "<Category Name=\"Analog\"><pFeature>Gain</pFeature><pFeature>Black</pFeature></Category>"
         "<Category Name=\"Black\"><pFeature>Level</pFeature></Category>"
         "<Category Name=\"Image\"><pFeature>Width</pFeature><pFeature>Height</pFeature></Category>"
         "<Integer Name=\"Height\"><Value>1</Value></Integer><Integer "
         "Name=\"Width\"><Value>1</Value></Integer>"
         "<Float Name=\"Gain\"><Value>1</Value></Float><Integer Name=\"Level\"><Value>1</Value></Integer>"
         "<Integer Name=\"Hidden\"><Value>1</Value></Integer>");

    EXPECT_THAT(Listed(), ElementsAre("root\\Image|Width", "root\\Image|Height", "root|Top",
                                      "root\\Analog|Gain", "root\\Analog\\Black|Level"));
}

TEST_F(FeatureListTest, ListsAFeatureUnderTheCategoryThatNamesItFirst)
{
    Load("<Category Name=\"Root\"><pFeature>A</pFeature><pFeature>B</pFeature></Category>"
         "<Category Name=\"A\"><pFeature>X</pFeature><pFeature>X</pFeature></Category>"
         "<Category Name=\"B\"><pFeature>X</pFeature><pFeature>Y</pFeature></Category>"
         "<Integer Name=\"X\"><Value>1</Value></Integer><Integer Name=\"Y\"><Value>1</Value></Integer>");

    EXPECT_THAT(Listed(), ElementsAre("root\\A|X", "root\\B|Y"));
}

TEST_F(FeatureListTest, EndsCategoriesThatLeadToEachOther)
{
    Load("<Category Name=\"Root\"><pFeature>A</pFeature></Category>"
         "<Category Name=\"A\"><pFeature>B</pFeature><pFeature>X</pFeature></Category>"
         "<Category "
         "Name=\"B\"><pFeature>A</pFeature><pFeature>Root</pFeature><pFeature>B</pFeature></Category>"
         "<Integer Name=\"X\"><Value>1</Value></Integer>");

    EXPECT_THAT(Listed(), ElementsAre("root\\A|X"));
}

TEST_F(FeatureListTest, PassesOverWhatIsMissingOrHasNoValue)
{
    Load("<Category "
         "Name=\"Root\"><pFeature>Gone</pFeature><pFeature>Empty</pFeature><pFeature>Device</pFeature>"
         "<pFeature>Nothing</pFeature><pFeature>X</pFeature></Category><Category Name=\"Empty\"/>"
         "<Node Name=\"Nothing\"/><Register Name=\"X\"><Address>0</Address><Length>4</Length></Register>");

    EXPECT_THAT(Listed(), ElementsAre("root|X"));
    EXPECT_FALSE(map->Notices().empty());
}

TEST_F(FeatureListTest, ListsWhatNobodyUsesWithoutARoot)
{
    Load("<Integer Name=\"Width\"><pValue>Reg</pValue></Integer>"
         "<IntReg Name=\"Reg\"><Address>0</Address><Length>4</Length></IntReg>"
         "<Enumeration Name=\"Mode\"><EnumEntry "
         "Name=\"On\"><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>");

    EXPECT_THAT(Listed(), ElementsAre("root|Width", "root|Mode"));
}

TEST_F(FeatureListTest, BoundsThePathsOfLongNames)
{
    std::string nodes = "<Category Name=\"Root\"><pFeature>C0</pFeature></Category>";
    const auto nameOf = [](int i) { return "C" + std::to_string(i) + (i == 0 ? "" : std::string(200, 'c')); };
    for (int i = 0; i < 10; ++i)
        nodes += "<Category Name=\"" + nameOf(i) + "\"><pFeature>" + nameOf(i + 1) +
                 "</pFeature><pFeature>F" + std::to_string(i) + "</pFeature></Category><Integer Name=\"F" +
                 std::to_string(i) + "\"><Value>1</Value></Integer>";
    Load(nodes);

    EXPECT_EQ(map->Features().size(), 6u); // five names of 200 characters fit into a path of 1024
}

TEST_F(FeatureListTest, BoundsThePathsOfDeepTrees)
{
    std::string nodes = "<Category Name=\"Root\"><pFeature>C0</pFeature></Category>";
    for (int i = 0; i < 20000; ++i)
        nodes += "<Category Name=\"C" + std::to_string(i) + "\"><pFeature>C" + std::to_string(i + 1) +
                 "</pFeature><pFeature>F" + std::to_string(i) + "</pFeature></Category><Integer Name=\"F" +
                 std::to_string(i) + "\"><Value>1</Value></Integer>";
    Load(nodes);

    EXPECT_EQ(map->Features().size(), 63u); // 64 levels, the root among them
}

} // namespace
} // namespace genapi
