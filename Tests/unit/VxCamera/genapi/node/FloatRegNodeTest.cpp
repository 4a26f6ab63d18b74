#include "VxCamera/genapi/node/FloatRegNode.h"

#include "support/genapi/NodeMapFixture.h"

#include <cfloat>
#include <cmath>

namespace genapi {
namespace {

class FloatRegNodeTest : public NodeMapFixture {
protected:
    void LoadRegister(std::string_view elements)
    {
        Load("<FloatReg "
             "Name=\"R\"><Address>0</Address><AccessMode>RW</AccessMode><Endianess>BigEndian</Endianess>" +
             std::string(elements) + "</FloatReg>");
    }
};

TEST_F(FloatRegNodeTest, ReadsFourBytes)
{
    port.Put(0, {0x40, 0x49, 0x0F, 0xDB}); // the float nearest to pi
    LoadRegister("<Length>4</Length>");

    EXPECT_EQ(ValueOf(Float("R")), static_cast<double>(3.14159274f));
    EXPECT_EQ(ValueOf(Text("R")), "3.1415927");
}

TEST_F(FloatRegNodeTest, ReadsEightBytes)
{
    port.Put(0, {0x3F, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A});
    LoadRegister("<Length>8</Length>");

    EXPECT_EQ(ValueOf(Float("R")), 0.1);
}

TEST_F(FloatRegNodeTest, WritesBothLengths)
{
    LoadRegister("<Length>4</Length>");
    ASSERT_TRUE(map->SetFloat(Id("R"), -2).IsOK());
    EXPECT_EQ(port.Get(0, 4), (std::vector{0xC0, 0, 0, 0}));

    LoadRegister("<Length>8</Length>");
    ASSERT_TRUE(map->SetFloat(Id("R"), -2).IsOK());
    EXPECT_EQ(port.Get(0, 8), (std::vector{0xC0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(FloatRegNodeTest, ReadsLittleEndian)
{
    port.Put(0, {0, 0, 0x80, 0x3F});
    LoadRegister("<Length>4</Length><Endianess>LittleEndian</Endianess>");

    EXPECT_EQ(ValueOf(Float("R")), 1.0);
}

TEST_F(FloatRegNodeTest, LimitsToWhatItsLengthHolds)
{
    LoadRegister("<Length>4</Length>");

    EXPECT_EQ(ValueOf(map->GetFloatLimits(Id("R"))).maximum, static_cast<double>(FLT_MAX));
    EXPECT_EQ(CodeOf(map->SetFloat(Id("R"), 1e39)), VxError::OutOfRange);
    EXPECT_EQ(CodeOf(map->SetFloat(Id("R"), std::nan(""))), VxError::OutOfRange);
    EXPECT_EQ(CodeOf(map->SetFloat(Id("R"), -INFINITY)), VxError::OutOfRange);
}

TEST_F(FloatRegNodeTest, IsNotImplementedWithOtherLengths)
{
    LoadRegister("<Length>2</Length>");

    EXPECT_EQ(Access("R"), AccessMode::NotImplemented);
    EXPECT_NE(SentenceOf(Float("R")).find("4 or 8 bytes"), std::string::npos) << SentenceOf(Float("R"));
}

TEST_F(FloatRegNodeTest, RefusesAComputedLengthThatIsWrong)
{
    Load("<FloatReg Name=\"R\"><Address>0</Address><pLength>L</pLength><AccessMode>RW</AccessMode></FloatReg>"
         "<Integer Name=\"L\"><Value>12</Value></Integer>");

    EXPECT_EQ(CodeOf(Float("R")), VxError::InvalidData);
    EXPECT_EQ(CodeOf(map->SetFloat(Id("R"), 1)), VxError::InvalidData);
}

TEST_F(FloatRegNodeTest, IsReadAsARoundedInteger)
{
    Load("<Integer Name=\"I\"><pValue>R</pValue></Integer>"
         "<FloatReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode></FloatReg>");
    ASSERT_TRUE(map->SetFloat(Id("R"), 2.5).IsOK());

    EXPECT_EQ(ValueOf(Integer("I")), 3);
    ASSERT_TRUE(SetInteger("I", -7).IsOK());
    EXPECT_EQ(ValueOf(Float("R")), -7.0);
}

TEST_F(FloatRegNodeTest, IsNoIntegerWhereItHoldsNone)
{
    port.Put(0, {0x7F, 0xC0, 0, 0}); // not a number
    LoadRegister("<Length>4</Length>");

    EXPECT_EQ(CodeOf(Integer("R")), VxError::OutOfRange);
}

} // namespace
} // namespace genapi
