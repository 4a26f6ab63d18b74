#include "VxCamera/genapi/node/BooleanNode.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

class BooleanNodeTest : public NodeMapFixture {
protected:
    void LoadBoolean(std::string_view elements)
    {
        Load("<Boolean Name=\"B\">" + std::string(elements) +
             "</Boolean>"
             "<IntReg "
             "Name=\"Reg\"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode></IntReg>");
    }
};

TEST_F(BooleanNodeTest, IsTrueForItsOnValueOnly)
{
    LoadBoolean("<pValue>Reg</pValue><OnValue>5</OnValue><OffValue>3</OffValue>");

    ASSERT_TRUE(SetInteger("Reg", 5).IsOK());
    EXPECT_TRUE(ValueOf(map->GetBoolean(Id("B"))));
    for (const int other : {0, 1, 3}) {
        ASSERT_TRUE(SetInteger("Reg", other).IsOK());
        EXPECT_FALSE(ValueOf(map->GetBoolean(Id("B")))) << other;
    }
}

TEST_F(BooleanNodeTest, WritesOnAndOffValues)
{
    LoadBoolean("<pValue>Reg</pValue><OnValue>5</OnValue><OffValue>3</OffValue>");

    ASSERT_TRUE(map->SetBoolean(Id("B"), true).IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{5}));
    ASSERT_TRUE(map->SetBoolean(Id("B"), false).IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{3}));
}

TEST_F(BooleanNodeTest, UsesOneAndZeroByDefault)
{
    LoadBoolean("<pValue>Reg</pValue>");

    ASSERT_TRUE(SetText("B", "true").IsOK());

    EXPECT_EQ(port.Get(0, 1), (std::vector{1}));
    EXPECT_EQ(ValueOf(Text("B")), "true");
    EXPECT_EQ(ValueOf(Integer("B")), 1);
}

TEST_F(BooleanNodeTest, KeepsAVariable)
{
    LoadBoolean("<Value>true</Value><OnValue>7</OnValue>");
    EXPECT_EQ(ValueOf(Text("B")), "true");
    ASSERT_TRUE(SetText("B", "0").IsOK());
    EXPECT_EQ(ValueOf(Text("B")), "false");

    LoadBoolean("<Value>0</Value>");
    EXPECT_EQ(ValueOf(Text("B")), "false");
}

TEST_F(BooleanNodeTest, RefusesTextThatIsNoTruthValue)
{
    LoadBoolean("<Value>true</Value>");

    const auto result = SetText("B", "maybe");

    EXPECT_EQ(CodeOf(result), VxError::InvalidData);
    EXPECT_EQ(SentenceOf(result), "B: \"maybe\" is no truth value: true or false");
}

TEST_F(BooleanNodeTest, IsNotImplementedWithAValueThatIsNeither)
{
    LoadBoolean("<Value>perhaps</Value>");

    EXPECT_EQ(Access("B"), AccessMode::NotImplemented);
}

} // namespace
} // namespace genapi
