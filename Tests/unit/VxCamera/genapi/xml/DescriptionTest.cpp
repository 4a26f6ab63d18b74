#include "VxCamera/genapi/xml/Description.h"

#include "support/genapi/NodeMapFixture.h"
#include "support/genapi/ZipBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

namespace genapi {
namespace {

std::shared_ptr<const Description> Parsed(std::string_view xml)
{
    auto description = Description::Parse(xml);
    EXPECT_TRUE(description) << SentenceOf(description);
    return description ? *std::move(description) : nullptr;
}

const NodeDescription& NodeOf(const Description& description, std::string_view name)
{
    return description.Nodes().at(description.Find(name).value());
}

std::string TextOf(const NodeDescription& node, Element element)
{
    for (const Property& property : node.properties)
        if (property.element == element)
            return std::string(property.text);
    return "(none)";
}

TEST(DescriptionTest, ReadsWhatItSaysOfItself)
{
    const auto description =
        Parsed("<RegisterDescription VendorName=\"Maker\" ModelName=\"Eye 5\" ToolTip=\"An eye\" "
               "StandardNameSpace=\"GEV\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
               "SchemaSubMinorVersion=\"2\" MajorVersion=\"3\" MinorVersion=\"4\" SubMinorVersion=\"5\" "
               "ProductGuid=\"11111111-2222-3333-4444-555555555555\" "
               "VersionGuid=\"66666666-7777-8888-9999-000000000000\"/>");

    const DescriptionHeader& header = description->Header();
    EXPECT_EQ(header.vendorName, "Maker");
    EXPECT_EQ(header.modelName, "Eye 5");
    EXPECT_EQ(header.toolTip, "An eye");
    EXPECT_EQ(header.standardNameSpace, "GEV");
    EXPECT_EQ(header.productGuid, "11111111-2222-3333-4444-555555555555");
    EXPECT_EQ(header.versionGuid, "66666666-7777-8888-9999-000000000000");
    EXPECT_EQ(header.schemaMajor, 1);
    EXPECT_EQ(header.schemaMinor, 1);
    EXPECT_EQ(header.schemaSubMinor, 2);
    EXPECT_EQ(header.major, 3);
    EXPECT_EQ(header.minor, 4);
    EXPECT_EQ(header.subMinor, 5);
}

TEST(DescriptionTest, TakesADescriptionWithoutVersionForTheOldSchema)
{
    const auto description = Parsed("<RegisterDescription/>");

    EXPECT_EQ(description->Header().schemaMajor, 1);
    EXPECT_EQ(description->Header().schemaMinor, 0);
}

TEST(DescriptionTest, UnpacksAZipArchive)
{
    const std::string xml = Describe("<Integer Name=\"I\"><Value>5</Value></Integer>");

    const auto description = Parsed(zip::Archive({zip::File("camera.xml", xml)}));

    EXPECT_EQ(TextOf(NodeOf(*description, "I"), Element::Value), "5");
    EXPECT_EQ(CodeOf(Description::Parse("PK\x03\x04")), VxError::InvalidData);
}

TEST(DescriptionTest, FindsNodesByNameSpace)
{
    const auto description =
        Parsed(Describe("<Integer Name=\"A\" NameSpace=\"Standard\"><Value>1</Value></Integer>"
                        "<Integer Name=\"B\" NameSpace=\"Custom\"><Value>2</Value></Integer>"
                        "<Integer Name=\"C\"><pValue>Std::A</pValue></Integer>"));

    EXPECT_EQ(description->Find("Std::A"), description->Find("A"));
    EXPECT_EQ(description->Find("Cust::B"), description->Find("B"));
    EXPECT_TRUE(description->Find("Cust::C")); // what nothing else is said of
    EXPECT_FALSE(description->Find("Cust::A"));
    EXPECT_FALSE(description->Find("Std::B"));
    EXPECT_EQ(NodeOf(*description, "C").properties[0].target, *description->Find("A"));
}

TEST(DescriptionTest, KeepsNodesOfOneNameInTwoNameSpaces)
{
    const auto description =
        Parsed(Describe("<Integer Name=\"A\"><Value>1</Value></Integer>"
                        "<Integer Name=\"A\" NameSpace=\"Standard\"><Value>2</Value></Integer>"));

    EXPECT_EQ(TextOf(NodeOf(*description, "A"), Element::Value), "1");
    EXPECT_EQ(TextOf(NodeOf(*description, "Cust::A"), Element::Value), "1");
    EXPECT_EQ(TextOf(NodeOf(*description, "Std::A"), Element::Value), "2");
    EXPECT_TRUE(description->Notices().empty());
}

TEST(DescriptionTest, PrefersTheNodeOfHigherPriority)
{
    const auto description =
        Parsed(Describe("<Integer Name=\"A\" MergePriority=\"-1\"><Value>1</Value></Integer>"
                        "<Integer Name=\"A\"><Value>2</Value></Integer>"
                        "<Integer Name=\"A\" MergePriority=\"+1\"><Value>3</Value></Integer>"
                        "<Integer Name=\"A\" MergePriority=\"1\"><Value>4</Value></Integer>"));

    EXPECT_EQ(TextOf(NodeOf(*description, "A"), Element::Value), "3");
    EXPECT_EQ(description->Notices().size(), 3u);
}

TEST(DescriptionTest, LeavesOutNodesWithoutAUsableName)
{
    const std::string longest(255, 'n');
    const auto description = Parsed(Describe("<Integer><Value>1</Value></Integer><Node Name=\"" + longest +
                                             "\"/><Node Name=\"" + longest + "x\"/>"));

    EXPECT_TRUE(description->Find(longest));
    EXPECT_FALSE(description->Find(longest + "x"));
    ASSERT_EQ(description->Notices().size(), 2u);
    EXPECT_EQ(description->Notices()[0].text, "a node of this kind has no name; it is left out");
    EXPECT_EQ(description->Notices()[1].text, "a node of this kind has a name of 256 bytes; it is left out");
}

TEST(DescriptionTest, IgnoresNameSpacesAndPrefixes)
{
    const auto description =
        Parsed("<g:RegisterDescription xmlns:g=\"http://www.genicam.org/GenApi/Version_1_0\">"
               "<g:Integer Name=\"I\"><g:Value>5</g:Value></g:Integer></g:RegisterDescription>");

    EXPECT_EQ(TextOf(NodeOf(*description, "I"), Element::Value), "5");
}

TEST(DescriptionTest, LooksIntoGroupsInGroups)
{
    const auto description =
        Parsed(Describe("<Group Comment=\"a\"><Group Comment=\"b\"><Node Name=\"In\"/></Group>"
                        "<Node Name=\"Behind\"/></Group><Node Name=\"After\"/>"));

    EXPECT_TRUE(description->Find("In"));
    EXPECT_TRUE(description->Find("Behind"));
    EXPECT_TRUE(description->Find("After"));
}

TEST(DescriptionTest, JoinsTextThatIsCutByCommentsAndCdata)
{
    const auto description =
        Parsed(Describe("<IntSwissKnife Name=\"K\"><Formula> 1 <!-- one --> + <![CDATA[ 2 < 3 ]]>"
                        " </Formula></IntSwissKnife>"));

    EXPECT_EQ(TextOf(NodeOf(*description, "K"), Element::Formula), "1  +  2 < 3");
}

TEST(DescriptionTest, ResolvesEntities)
{
    const auto description = Parsed(
        Describe("<IntSwissKnife Name=\"K\"><Formula>A &amp;&amp; B &lt; &#x33;</Formula></IntSwissKnife>"));

    EXPECT_EQ(TextOf(NodeOf(*description, "K"), Element::Formula), "A && B < 3");
}

TEST(DescriptionTest, ResolvesReferencesToLaterNodes)
{
    const auto description = Parsed(Describe(
        "<Integer Name=\"A\"><pValue>B</pValue></Integer><Integer Name=\"B\"><Value>1</Value></Integer>"));

    EXPECT_EQ(NodeOf(*description, "A").properties[0].target, *description->Find("B"));
}

TEST(DescriptionTest, NoticesReferencesToNodesThatAreMissing)
{
    const auto description = Parsed(Describe("<Integer Name=\"A\"><pValue>Nobody</pValue></Integer>"));

    ASSERT_EQ(description->Notices().size(), 1u);
    EXPECT_EQ(description->Notices()[0].node, "A");
    EXPECT_NE(description->Notices()[0].text.find("Nobody"), std::string::npos);
}

TEST(DescriptionTest, SkipsExtensionsWhateverTheyContain)
{
    const auto description =
        Parsed(Describe("<Integer Name=\"A\"><Extension><Value>9</Value><Any><Deep/></Any>"
                        "</Extension><Value>1</Value></Integer><Extension><Node/></Extension>"));

    EXPECT_EQ(TextOf(NodeOf(*description, "A"), Element::Value), "1");
    EXPECT_TRUE(description->Notices().empty());
}

TEST(DescriptionTest, NoticesUnknownElementsAndNodes)
{
    const auto description =
        Parsed(Describe("<Integer Name=\"A\"><Colour>red</Colour><Value>1</Value></Integer>"
                        "<Gadget Name=\"G\"/>"));

    ASSERT_EQ(description->Notices().size(), 2u);
    EXPECT_NE(description->Notices()[0].text.find("Gadget"), std::string::npos);
    EXPECT_NE(description->Notices()[1].text.find("Colour"), std::string::npos);
    EXPECT_FALSE(description->Find("G"));
}

TEST(DescriptionTest, KeepsTheFirstOfTwoNodesOfOneName)
{
    const auto description = Parsed(Describe(
        "<Integer Name=\"A\"><Value>1</Value></Integer><Integer Name=\"A\"><Value>2</Value></Integer>"));

    EXPECT_EQ(TextOf(NodeOf(*description, "A"), Element::Value), "1");
    EXPECT_EQ(description->Notices().size(), 1u);
}

TEST(DescriptionTest, KeepsEntriesOutOfTheNames)
{
    const auto description =
        Parsed(Describe("<Enumeration Name=\"Mode\"><EnumEntry Name=\"Width\"><Value>1</Value>"
                        "</EnumEntry><Value>1</Value></Enumeration>"));

    EXPECT_FALSE(description->Find("Width"));
}

TEST(DescriptionTest, FindsEntriesThatStandOutside)
{
    const auto description =
        Parsed(Describe("<EnumEntry Name=\"On\"><Value>1</Value></EnumEntry>"
                        "<Enumeration Name=\"Mode\"><pEnumEntry>On</pEnumEntry><Value>1</Value>"
                        "</Enumeration>"));

    const Property& entry = NodeOf(*description, "Mode").properties[0];
    EXPECT_EQ(entry.element, Element::EnumEntry);
    ASSERT_NE(entry.target, kNoNode);
    EXPECT_EQ(description->Nodes()[entry.target].name, "On");
}

TEST(DescriptionTest, GivesTheEntriesOfAStructureItsElements)
{
    const auto description =
        Parsed(Describe("<StructReg Comment=\"s\"><Address>0x100</Address><Length>4</Length>"
                        "<Visibility>Guru</Visibility>"
                        "<StructEntry Name=\"A\"><Bit>3</Bit></StructEntry>"
                        "<StructEntry Name=\"B\"><LSB>4</LSB></StructEntry></StructReg>"));

    EXPECT_EQ(NodeOf(*description, "A").kind, NodeKind::MaskedIntReg);
    EXPECT_EQ(TextOf(NodeOf(*description, "A"), Element::Address), "0x100");
    EXPECT_EQ(TextOf(NodeOf(*description, "A"), Element::Bit), "3");
    EXPECT_EQ(TextOf(NodeOf(*description, "B"), Element::Visibility), "Guru");
    EXPECT_EQ(TextOf(NodeOf(*description, "B"), Element::Bit), "(none)");
}

TEST(DescriptionTest, AcceptsNodesOfOtherBuses)
{
    const auto description =
        Parsed(Describe("<ConfRom Name=\"R\"><Unit>0</Unit><TextDesc Name=\"T\"><Key>1</Key>"
                        "</TextDesc></ConfRom><SmartFeature Name=\"S\"/>"));

    EXPECT_EQ(NodeOf(*description, "R").kind, NodeKind::Unsupported);
    EXPECT_TRUE(description->Notices().empty());
}

TEST(DescriptionTest, AcceptsRemainsBehindTheDocument)
{
    const std::string xml = Describe("<Node Name=\"N\"/>");

    EXPECT_TRUE(Description::Parse(xml + std::string(300, '\0')));
    EXPECT_TRUE(Description::Parse(xml + "\n\n<older <junk"));
    EXPECT_TRUE(Description::Parse("\xEF\xBB\xBF" + xml));
}

TEST(DescriptionTest, ReadsLatin1WhereTheBytesAreNoUtf8)
{
    const auto description = Parsed(Describe("<Float Name=\"T\"><Unit>\xB0"
                                             "C</Unit><Value>1</Value></Float>"));

    EXPECT_EQ(TextOf(NodeOf(*description, "T"), Element::Unit), "\xC2\xB0"
                                                                "C");
}

TEST(DescriptionTest, ReadsUtf16)
{
    const std::string xml =
        Describe("<Integer Name=\"Wide\"><Value>3</Value></Integer>")
            .replace(0, std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>").size(), "");
    std::string wide = "\xFF\xFE";
    for (const char c : xml) {
        wide += c;
        wide += '\0';
    }

    const auto description = Parsed(wide);

    EXPECT_EQ(TextOf(NodeOf(*description, "Wide"), Element::Value), "3");
}

TEST(DescriptionTest, SaysWhereTheXmlIsBroken)
{
    const auto description =
        Description::Parse("<RegisterDescription>\n  <Integer Name=\"A\"></Float>\n</RegisterDescription>");

    ASSERT_FALSE(description);
    EXPECT_EQ(CodeOf(description), VxError::InvalidData);
    EXPECT_NE(SentenceOf(description).find("line 2"), std::string::npos) << SentenceOf(description);
}

TEST(DescriptionTest, RefusesTextsThatAreNoDescription)
{
    for (const char* xml :
         {"", " ", "hello", "<", "<html></html>", "<?xml version=\"1.0\"?>", "\xFF\xFE", "\0"})
        EXPECT_EQ(CodeOf(Description::Parse(xml)), VxError::InvalidData) << xml;
}

TEST(DescriptionTest, RefusesEveryTruncation)
{
    const std::string xml = Describe("<Integer Name=\"A\"><Value>1</Value></Integer>");

    for (std::size_t length = 0; length < xml.size(); ++length)
        EXPECT_FALSE(Description::Parse(xml.substr(0, length))) << length;
}

TEST(DescriptionTest, DoesNotExpandEntitiesOfADocumentType)
{
    const auto description = Description::Parse(
        "<!DOCTYPE d [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
        "<RegisterDescription><Integer Name=\"A\"><ToolTip>&b;</ToolTip><Value>1</Value></Integer>"
        "</RegisterDescription>");

    ASSERT_TRUE(description) << SentenceOf(description);
    EXPECT_EQ(TextOf(NodeOf(**description, "A"), Element::ToolTip), "&b;");
}

TEST(DescriptionTest, SurvivesDeepNesting)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<Group>";
    for (int i = 0; i < 100000; ++i)
        deep += "</Group>";
    std::string inside = "<Integer Name=\"A\"><Value>1</Value>";
    for (int i = 0; i < 100000; ++i)
        inside += "<Value>";
    for (int i = 0; i < 100000; ++i)
        inside += "</Value>";

    EXPECT_TRUE(Description::Parse(Describe(deep)));
    EXPECT_TRUE(Description::Parse(Describe(inside + "</Integer>")));
}

TEST(DescriptionTest, RefusesMoreNodesThanItsLimit)
{
    std::string nodes;
    for (int i = 0; i < 100001; ++i)
        nodes += "<Node Name=\"N" + std::to_string(i) + "\"/>";

    const auto description = Description::Parse(Describe(nodes));

    EXPECT_EQ(CodeOf(description), VxError::InvalidData);
    EXPECT_NE(SentenceOf(description).find("100000 nodes"), std::string::npos) << SentenceOf(description);
}

TEST(DescriptionTest, RefusesNamesThatAreMadeToBeSlow)
{
    // As many names as fill one bucket of the table that they end up in.
    constexpr std::size_t kNames = 100;
    std::unordered_set<std::size_t> table;
    for (std::size_t i = 0; i < kNames; ++i)
        table.insert(i);
    std::string nodes;
    std::size_t found = 0;
    for (int i = 0; found < kNames; ++i) {
        const std::string name = "N" + std::to_string(i);
        if (std::hash<std::string_view>()(name) % table.bucket_count() == 0) {
            nodes += "<Node Name=\"" + name + "\"/>";
            ++found;
        }
    }

    EXPECT_EQ(SentenceOf(Description::Parse(Describe(nodes))),
              "the names of the camera's description are made to be slow");
}

TEST(DescriptionTest, RefusesStructuresThatMultiply)
{
    std::string structure = "<StructReg>";
    for (int i = 0; i < 5000; ++i)
        structure += "<Address>1</Address>";
    for (int i = 0; i < 5000; ++i)
        structure += "<StructEntry Name=\"E" + std::to_string(i) + "\"/>";

    EXPECT_EQ(CodeOf(Description::Parse(Describe(structure + "</StructReg>"))), VxError::InvalidData);
}

TEST(DescriptionTest, RefusesTooManyBytes)
{
    const auto description = Description::Parse(std::string(64 * 1024 * 1024 + 1, ' '));

    EXPECT_EQ(CodeOf(description), VxError::InvalidData);
    EXPECT_EQ(SentenceOf(description),
              "the camera's description has 67108865 bytes; at most 67108864 are accepted");
}

TEST(DescriptionTest, RefusesTooManyTagsAndAttributes)
{
    std::string tags = "<RegisterDescription>";
    std::string attributes = "<RegisterDescription";
    for (int i = 0; i < 3'000'001; ++i) {
        tags += "<a/>";
        attributes += " a=''";
    }

    for (const std::string& xml : {tags + "</RegisterDescription>", attributes + "/>"})
        EXPECT_EQ(SentenceOf(Description::Parse(xml)),
                  "the camera's description has more than 3000000 tags and attributes");
}

} // namespace
} // namespace genapi
