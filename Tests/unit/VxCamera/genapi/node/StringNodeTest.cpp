#include "VxCamera/genapi/node/StringNode.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

class StringNodeTest : public NodeMapFixture {
protected:
    void LoadRegister()
    {
        Load("<StringReg "
             "Name=\"R\"><Address>0</Address><Length>8</Length><AccessMode>RW</AccessMode></StringReg>"
             "<String Name=\"S\"><pValue>R</pValue></String>"
             "<String Name=\"V\"><Value>fixed text</Value></String>");
    }
};

TEST_F(StringNodeTest, ReadsUpToTheFirstZero)
{
    port.Put(0, {'C', 'a', 'm', 0, 'x'});
    LoadRegister();

    EXPECT_EQ(ValueOf(map->GetString(Id("S"))), "Cam");
    EXPECT_EQ(ValueOf(Text("R")), "Cam");
}

TEST_F(StringNodeTest, ReadsTheWholeRegisterWithoutAZero)
{
    port.Put(0, {'1', '2', '3', '4', '5', '6', '7', '8', '9'});
    LoadRegister();

    EXPECT_EQ(ValueOf(map->GetString(Id("S"))), "12345678");
}

TEST_F(StringNodeTest, ReadsLatin1AsUtf8)
{
    port.Put(0, {'2', 0xB0, 'C', 0});
    LoadRegister();

    EXPECT_EQ(ValueOf(map->GetString(Id("S"))), "2\xC2\xB0"
                                                "C");
}

TEST_F(StringNodeTest, FillsTheRegisterWithZeros)
{
    port.Put(0, {'o', 'l', 'd', ' ', 'n', 'a', 'm', 'e'});
    LoadRegister();

    ASSERT_TRUE(map->SetString(Id("S"), "new").IsOK());

    EXPECT_EQ(port.Get(0, 8), (std::vector<int>{'n', 'e', 'w', 0, 0, 0, 0, 0}));
}

TEST_F(StringNodeTest, RefusesTextThatIsTooLong)
{
    LoadRegister();

    EXPECT_TRUE(map->SetString(Id("S"), "12345678").IsOK());
    const auto result = map->SetString(Id("S"), "123456789");

    EXPECT_EQ(CodeOf(result), VxError::OutOfRange);
    EXPECT_EQ(SentenceOf(result), "S: R: the text has 9 bytes; there is room for 8");
}

TEST_F(StringNodeTest, RefusesZerosInsideOfText)
{
    LoadRegister();

    EXPECT_EQ(CodeOf(map->SetString(Id("S"), std::string_view("a\0b", 3))), VxError::InvalidData);
}

TEST_F(StringNodeTest, KeepsAVariable)
{
    LoadRegister();

    EXPECT_EQ(ValueOf(map->GetString(Id("V"))), "fixed text");
    ASSERT_TRUE(SetText("V", "other").IsOK());
    EXPECT_EQ(ValueOf(Text("V")), "other");
}

TEST_F(StringNodeTest, IsNoNumber)
{
    LoadRegister();

    EXPECT_EQ(CodeOf(Integer("S")), VxError::TypeMismatch);
    EXPECT_EQ(CodeOf(Float("S")), VxError::TypeMismatch);
    EXPECT_EQ(CodeOf(SetInteger("S", 1)), VxError::TypeMismatch);
    EXPECT_EQ(CodeOf(map->SetFloat(Id("S"), 1)), VxError::TypeMismatch);
}

} // namespace
} // namespace genapi
