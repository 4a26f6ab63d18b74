#include "VxCamera/genapi/map/NodeMap.h"

#include "support/genapi/NodeMapFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace genapi {
namespace {

using ::testing::HasSubstr;

/// Descriptions that nobody means well with: every operation ends, and says something.
class HostileDescriptionTest : public NodeMapFixture {
protected:
    /// Uses each node in every way there is.
    void UseAll()
    {
        for (std::uint32_t i = 0; i < map->NodeCount(); ++i) {
            const auto node = static_cast<NodeId>(i);
            std::ignore = map->Access(node);
            std::ignore = map->ToText(node);
            std::ignore = map->GetInteger(node);
            std::ignore = map->GetFloat(node);
            std::ignore = map->GetString(node);
            std::ignore = map->GetBytes(node);
            std::ignore = map->GetBoolean(node);
            std::ignore = map->GetEntry(node);
            std::ignore = map->GetIntegerLimits(node);
            std::ignore = map->GetFloatLimits(node);
            std::ignore = map->IsDone(node);
            std::ignore = map->FromText(node, "1");
            std::ignore = map->SetInteger(node, 1);
            std::ignore = map->SetFloat(node, 1);
            std::ignore = map->SetString(node, "1");
            std::ignore = map->SetBytes(node, std::vector<std::byte>(4));
            std::ignore = map->SetBoolean(node, true);
            std::ignore = map->SetEntry(node, "A");
            std::ignore = map->Execute(node);
        }
        map->InvalidateAll();
        clock.Advance(std::chrono::milliseconds(1000));
    }
};

TEST_F(HostileDescriptionTest, EndsNodesThatReferToThemselves)
{
    Load("<Integer Name=\"A\"><pValue>A</pValue></Integer><Float Name=\"F\"><pValue>F</pValue></Float>"
         "<Boolean Name=\"B\"><pValue>B</pValue></Boolean><String Name=\"S\"><pValue>S</pValue></String>"
         "<Command Name=\"C\"><pValue>C</pValue><pCommandValue>C</pCommandValue></Command>"
         "<Enumeration Name=\"E\"><EnumEntry "
         "Name=\"A\"><Value>1</Value><pIsAvailable>E</pIsAvailable></EnumEntry>"
         "<pValue>E</pValue></Enumeration>"
         "<Converter "
         "Name=\"V\"><pValue>V</pValue><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom></Converter>"
         "<IntConverter Name=\"W\"><pValue>W</pValue></IntConverter>"
         "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">K</pVariable><Formula>X+X</Formula></IntSwissKnife>"
         "<IntReg Name=\"R\"><pAddress>R</pAddress><pLength>R</pLength><AccessMode>RW</AccessMode></IntReg>"
         "<Integer "
         "Name=\"L\"><Value>1</Value><pMin>L</pMin><pMax>L</pMax><pInc>L</pInc><pIsLocked>L</pIsLocked>"
         "<pInvalidator>L</pInvalidator><pSelected>L</pSelected></Integer>"
         "<Integer Name=\"D\"><pIndex>D</pIndex><pValueIndexed Index=\"0\">D</pValueIndexed></Integer>"
         "<Port Name=\"P\"><pChunkID>Q</pChunkID></Port>"
         "<StringReg Name=\"Q\"><Address>0</Address><Length>4</Length><pPort>P</pPort></StringReg>");

    UseAll();
    map->AttachChunks({});

    EXPECT_EQ(CodeOf(map->GetInteger(Id("K"))), VxError::InvalidData);
    EXPECT_THAT(SentenceOf(map->GetInteger(Id("A"))), HasSubstr("refers to itself"));
}

TEST_F(HostileDescriptionTest, EndsCyclesOfSeveralNodes)
{
    Load("<Integer Name=\"A\"><pValue>B</pValue></Integer><Integer Name=\"B\"><pValue>C</pValue></Integer>"
         "<IntConverter Name=\"C\"><pValue>A</pValue><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
         "</IntConverter>");

    UseAll();

    EXPECT_THAT(SentenceOf(map->GetInteger(Id("B"))), HasSubstr("B: "));
    EXPECT_EQ(CodeOf(map->GetInteger(Id("B"))), VxError::InvalidData);
}

TEST_F(HostileDescriptionTest, EndsFormulasThatDoubleWithEachStep)
{
    std::string nodes = "<Integer Name=\"K60\"><Value>1</Value></Integer>";
    for (int i = 0; i < 60; ++i) {
        const std::string next = "K" + std::to_string(i + 1);
        nodes += "<IntSwissKnife Name=\"K" + std::to_string(i) + "\"><pVariable Name=\"X\">" + next +
                 "</pVariable><pVariable Name=\"Y\">" + next +
                 "</pVariable><Formula>X+Y</Formula></IntSwissKnife>";
    }
    Load(nodes);

    EXPECT_EQ(CodeOf(map->GetInteger(Id("K0"))), VxError::InvalidData);
    EXPECT_EQ(Access("K0"), AccessMode::ReadOnly);
    EXPECT_EQ(ValueOf(map->GetInteger(Id("K50"))), 1024);
}

TEST_F(HostileDescriptionTest, EndsConditionsThatDoubleWithEachStep)
{
    std::string nodes = "<Integer Name=\"A60\"><Value>1</Value></Integer>";
    for (int i = 0; i < 60; ++i) {
        const std::string next = "A" + std::to_string(i + 1);
        nodes += "<Integer Name=\"A" + std::to_string(i) + "\"><pValue>" + next + "</pValue><pIsAvailable>" +
                 next + "</pIsAvailable><pIsImplemented>" + next + "</pIsImplemented><pMin>" + next +
                 "</pMin></Integer>";
    }
    Load(nodes);

    UseAll();
}

TEST_F(HostileDescriptionTest, EndsChainsThatAreTooLong)
{
    std::string nodes = "<Integer Name=\"N3000\"><Value>1</Value></Integer>";
    for (int i = 0; i < 3000; ++i)
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i + 1) +
                 "</pValue></Integer>";
    Load(nodes);

    EXPECT_FALSE(map->GetInteger(Id("N0")));
    EXPECT_EQ(ValueOf(map->GetInteger(Id("N2950"))), 1);
    EXPECT_TRUE(map->SetInteger(Id("N3000"), 2).IsOK());
}

TEST_F(HostileDescriptionTest, BoundsTheReadsOfOneOperation)
{
    std::string nodes;
    std::string variables;
    std::string sum = "0";
    for (int i = 0; i < 500; ++i) {
        const std::string name = "V" + std::to_string(i);
        nodes += "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(i) +
                 "</Address><Length>1</Length>"
                 "<Cachable>NoCache</Cachable></IntReg>";
        variables += "<pVariable Name=\"" + name + "\">" + name + "</pVariable>";
        sum += "+" + name;
    }
    nodes += "<IntSwissKnife Name=\"A\">" + variables + "<Formula>" + sum +
             "</Formula></IntSwissKnife>"
             "<IntSwissKnife Name=\"B\"><pVariable Name=\"A\">A</pVariable><Formula>A+A+A+A+A+A+A+A</Formula>"
             "</IntSwissKnife>";
    Load(nodes);

    EXPECT_TRUE(map->GetInteger(Id("A")));
    EXPECT_EQ(port.reads, 500);
    EXPECT_FALSE(map->GetInteger(Id("B")));
    EXPECT_LE(port.reads, 500 + 2001);
}

/// A camera that takes half a second for each access.
class SlowPort final : public IRegisterPort {
public:
    explicit SlowPort(FakeClock& clock) : m_clock(clock) {}

    VxResult Read(std::uint64_t, std::span<std::byte> bytes) override
    {
        std::ranges::fill(bytes, std::byte{1});
        return Take();
    }
    VxResult Write(std::uint64_t, std::span<const std::byte>) override { return Take(); }

    int accesses = 0;

private:
    VxResult Take()
    {
        ++accesses;
        m_clock.Advance(std::chrono::milliseconds(500));
        return VxResult::Ok();
    }

    FakeClock& m_clock; // borrowed: outlives the port
};

/// "Sum" of 100 registers, "Few" of ten, "Locked" and "Copies" that need 100 as well.
std::string ManyRegisters()
{
    std::string nodes;
    std::string variables;
    std::string copies;
    std::string sum = "0";
    std::string few = "0";
    for (int i = 0; i < 100; ++i) {
        const std::string name = "V" + std::to_string(i);
        nodes +=
            "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(i) +
            "</Address><Length>1</Length><AccessMode>RW</AccessMode><Cachable>NoCache</Cachable></IntReg>";
        variables += "<pVariable Name=\"" + name + "\">" + name + "</pVariable>";
        copies += "<pValueCopy>" + name + "</pValueCopy>";
        sum += "+" + name;
        few += i < 10 ? "+" + name : std::string();
    }
    const auto knife = [&](const std::string& name, const std::string& formula) {
        return "<IntSwissKnife Name=\"" + name + "\">" + variables + "<Formula>" + formula +
               "</Formula></IntSwissKnife>";
    };
    return nodes + knife("Sum", sum) + knife("Few", few) +
           "<Integer Name=\"Locked\"><Value>1</Value><pIsAvailable>Sum</pIsAvailable></Integer>"
           "<Integer Name=\"Copies\"><Value>0</Value>" +
           copies + "</Integer>";
}

TEST_F(HostileDescriptionTest, EndsAnOperationThatAsksASlowCameraForTooLong)
{
    constexpr int kMostAccesses = 21; // ten seconds, and the one in which they pass
    SlowPort slow(clock);
    map = *NodeMap::Load(Describe(ManyRegisters()), slow, RegisterOrder::AsDescribed, &clock);

    const auto sum = Integer("Sum");
    EXPECT_EQ(CodeOf(sum), VxError::Timeout);
    EXPECT_THAT(SentenceOf(sum), testing::StartsWith("Sum: the camera was asked for it for more than 10 s"));
    EXPECT_EQ(slow.accesses, kMostAccesses);

    EXPECT_EQ(ValueOf(Integer("Few")), 10); // a new operation has time of its own

    slow.accesses = 0;
    const VxResult set = SetInteger("Copies", 1);
    EXPECT_EQ(CodeOf(set), VxError::Timeout);
    EXPECT_THAT(SentenceOf(set), testing::StartsWith("Copies: "));
    EXPECT_EQ(slow.accesses, kMostAccesses);
}

TEST_F(HostileDescriptionTest, SaysThatAConditionTookTooLong)
{
    SlowPort slow(clock);
    map = *NodeMap::Load(Describe(ManyRegisters()), slow, RegisterOrder::AsDescribed, &clock);

    EXPECT_EQ(CodeOf(SetInteger("Locked", 1)), VxError::Timeout);
    EXPECT_THAT(SentenceOf(SetInteger("Locked", 1)), testing::StartsWith("Locked: "));
}

TEST_F(HostileDescriptionTest, CountsOnlyStepsWithoutAClock)
{
    SlowPort slow(clock);
    map = *NodeMap::Load(Describe(ManyRegisters()), slow);

    EXPECT_EQ(ValueOf(Integer("Sum")), 100);
}

TEST_F(HostileDescriptionTest, NamesEveryNodeThatItHadToGiveUp)
{
    Load("<IntReg Name=\"NoLength\"><Address>0</Address></IntReg>"
         "<Integer Name=\"Lost\"><pValue>Nobody</pValue></Integer>"
         "<Float Name=\"NoNumber\"><Value>abc</Value></Float>"
         "<IntSwissKnife Name=\"NoFormula\"/><Converter Name=\"NoTarget\"/>"
         "<Port Name=\"BadChunk\"><ChunkID>zz</ChunkID></Port>"
         "<IntReg Name=\"BadIndex\"><pIndex Offset=\"x\">Good</pIndex><Length>1</Length></IntReg>"
         "<IntReg Name=\"NoOffset\"><pIndex pOffset=\"Gone\">Good</pIndex><Length>1</Length></IntReg>"
         "<Integer Name=\"Good\"><Value>1</Value></Integer>");

    for (const char* name :
         {"NoLength", "Lost", "NoNumber", "NoFormula", "NoTarget", "BadChunk", "BadIndex", "NoOffset"}) {
        EXPECT_EQ(Access(name), AccessMode::NotImplemented) << name;
        const auto isNamed = [&](const Notice& notice) { return notice.node == name; };
        EXPECT_TRUE(std::any_of(map->Notices().begin(), map->Notices().end(), isNamed)) << name;
    }
    EXPECT_EQ(ValueOf(Integer("Good")), 1);
}

TEST_F(HostileDescriptionTest, SurvivesNodesThatReferAtRandom)
{
    const std::vector<std::string> tags{
        "Integer",       "IntReg",    "MaskedIntReg", "Boolean",   "Command",  "Enumeration",
        "Float",         "FloatReg",  "String",       "StringReg", "Register", "SwissKnife",
        "IntSwissKnife", "Converter", "IntConverter", "Port",      "Category", "Node"};
    const std::vector<std::string> references{
        "pValue",    "pIsImplemented", "pIsAvailable",  "pIsLocked", "pMin",       "pMax",
        "pInc",      "pAddress",       "pLength",       "pPort",     "pIndex",     "pInvalidator",
        "pSelected", "pFeature",       "pCommandValue", "pChunkID",  "pValueCopy", "pValueDefault"};
    const std::vector<std::string> values{"0", "1",  "-1", "4", "0xFFFFFFFFFFFFFFFF", "9223372036854775807",
                                          "x", "NaN"};
    const std::vector<std::string> plain{"Value",   "Min",         "Max",         "Inc", "Address",
                                         "Length",  "Bit",         "LSB",         "MSB", "CommandValue",
                                         "OnValue", "PollingTime", "ValueDefault"};
    std::mt19937 random(11);
    const auto pick = [&](const std::vector<std::string>& from) { return from[random() % from.size()]; };
    for (int round = 0; round < 300; ++round) {
        std::string nodes =
            "<Category Name=\"Root\"><pFeature>N0</pFeature><pFeature>N1</pFeature></Category>";
        for (int i = 0; i < 12; ++i) {
            const std::string tag = pick(tags);
            nodes += "<" + tag + " Name=\"N" + std::to_string(i) + "\"><Length>4</Length>";
            for (int j = 0; j < 4; ++j) {
                const std::string reference = pick(references);
                nodes += "<" + reference + ">N" + std::to_string(random() % 13) + "</" + reference + ">";
                const std::string element = pick(plain);
                nodes += "<" + element + ">" + pick(values) + "</" + element + ">";
            }
            nodes += "<pVariable Name=\"X\">N" + std::to_string(random() % 12) +
                     "</pVariable>"
                     "<Formula>X*2+X.Max</Formula><FormulaTo>FROM/X</"
                     "FormulaTo><FormulaFrom>TO<![CDATA[<<]]>X</FormulaFrom>"
                     "<AccessMode>RW</AccessMode></" +
                     tag + ">";
        }
        Load(nodes);
        UseAll();
    }
}

TEST_F(HostileDescriptionTest, BoundsWhatCopiesOfAValueCost)
{
    std::string copies;
    std::string nodes;
    for (int i = 0; i < 30'000; ++i) {
        const std::string name = "V" + std::to_string(i);
        copies += "<pValueCopy>" + name + "</pValueCopy><pInvalidator>" + name + "</pInvalidator>";
        nodes += "<Integer Name=\"" + name + "\"><Value>0</Value><pInvalidator>A</pInvalidator></Integer>";
    }
    Load("<Integer Name=\"A\"><Value>0</Value>" + copies + "</Integer>" + nodes);

    EXPECT_FALSE(SetInteger("A", 1).IsOK());
    EXPECT_EQ(ValueOf(Integer("V0")), 1);
    EXPECT_TRUE(SetInteger("V29999", 1).IsOK());
}

TEST_F(HostileDescriptionTest, BoundsWhatPollingTimesCost)
{
    std::string nodes = "<IntReg Name=\"N20000\"><Address>0</Address><Length>1</Length></IntReg>";
    for (int i = 0; i < 20'000; ++i)
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i + 1) +
                 "</pValue><PollingTime>5</PollingTime><EventID>1</EventID></Integer>";
    Load(nodes);

    map->AttachEvent(1, {});

    EXPECT_EQ(ValueOf(Integer("N20000")), 0);
}

TEST_F(HostileDescriptionTest, BoundsWhatALongListOfEntriesCosts)
{
    std::string entries;
    for (int i = 0; i < 20'000; ++i)
        entries += "<EnumEntry Name=\"E" + std::to_string(i) + "\"><Value>" + std::to_string(i) +
                   "</Value></EnumEntry>";
    std::string sum = "0";
    for (int i = 0; i < 10'000; ++i)
        sum += "+X.Max";
    std::string copies;
    for (int i = 0; i < 20'000; ++i)
        copies += "<pValueCopy>E</pValueCopy>";
    Load("<Enumeration Name=\"E\">" + entries +
         "<Value>0</Value></Enumeration>"
         "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">E</pVariable><Formula>" +
         sum + "</Formula></IntSwissKnife><Integer Name=\"C\"><Value>0</Value>" + copies + "</Integer>");

    EXPECT_EQ(ValueOf(Integer("K")), 199'990'000);
    EXPECT_FALSE(SetInteger("C", 19'999).IsOK());
}

TEST_F(HostileDescriptionTest, FindsOneOfManyVariablesAndValues)
{
    std::string variables;
    std::string values;
    for (int i = 0; i < 100'000; ++i) {
        const std::string number = std::to_string(i);
        variables += "<pVariable Name=\"X" + number + "\">One</pVariable>";
        values += "<ValueIndexed Index=\"" + number + "\">" + number + "</ValueIndexed>";
    }
    std::string sum = "0";
    for (int i = 0; i < 10'000; ++i)
        sum += "+I";
    Load("<Integer Name=\"One\"><Value>1</Value></Integer><Integer "
         "Name=\"Last\"><Value>99999</Value></Integer>"
         "<Integer Name=\"I\"><pIndex>Last</pIndex>" +
         values +
         "</Integer>"
         "<IntSwissKnife Name=\"Sum\"><pVariable Name=\"I\">I</pVariable><Formula>" +
         sum + "</Formula></IntSwissKnife><IntSwissKnife Name=\"Many\">" + variables +
         "<Formula>X99999 + X5</Formula></IntSwissKnife>");

    EXPECT_EQ(ValueOf(Integer("Sum")), 999'990'000);
    EXPECT_EQ(ValueOf(Integer("Many")), 2);
}

} // namespace
} // namespace genapi
