#include "VxCamera/genapi/node/CommandNode.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

class CommandNodeTest : public NodeMapFixture {
protected:
    void LoadCommand(std::string_view elements, std::string_view access = "RW")
    {
        Load("<Command Name=\"C\">" + std::string(elements) +
             "</Command><IntReg Name=\"Reg\"><Address>0</Address>"
             "<Length>1</Length><AccessMode>" +
             std::string(access) +
             "</AccessMode></IntReg>"
             "<Integer Name=\"N\"><Value>9</Value></Integer>");
    }
};

TEST_F(CommandNodeTest, WritesItsNumber)
{
    LoadCommand("<pValue>Reg</pValue><CommandValue>4</CommandValue>");
    ASSERT_TRUE(map->Execute(Id("C")).IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{4}));

    LoadCommand("<pValue>Reg</pValue><pCommandValue>N</pCommandValue>");
    ASSERT_TRUE(SetText("C", "").IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{9}));
}

TEST_F(CommandNodeTest, IsDoneWhenTheCameraHasTakenTheNumberBack)
{
    LoadCommand("<pValue>Reg</pValue><CommandValue>1</CommandValue>");
    ASSERT_TRUE(map->Execute(Id("C")).IsOK());

    EXPECT_FALSE(ValueOf(map->IsDone(Id("C"))));
    port.Put(0, {0});
    EXPECT_TRUE(ValueOf(map->IsDone(Id("C"))));
}

TEST_F(CommandNodeTest, IsDoneAtOnceWhereThatCannotBeRead)
{
    LoadCommand("<pValue>Reg</pValue><CommandValue>1</CommandValue>", "WO");

    ASSERT_TRUE(map->Execute(Id("C")).IsOK());

    EXPECT_TRUE(ValueOf(map->IsDone(Id("C"))));
    EXPECT_EQ(port.reads, 0);
}

TEST_F(CommandNodeTest, CanOnlyBeWritten)
{
    LoadCommand("<pValue>Reg</pValue><CommandValue>1</CommandValue>");

    EXPECT_EQ(Access("C"), AccessMode::WriteOnly);
    EXPECT_EQ(ValueOf(Text("C")), "");
    EXPECT_EQ(port.reads, 0);
}

TEST_F(CommandNodeTest, IsNotAvailableOverARegisterThatCanOnlyBeRead)
{
    LoadCommand("<pValue>Reg</pValue><CommandValue>1</CommandValue>", "RO");

    EXPECT_EQ(Access("C"), AccessMode::NotAvailable);
    EXPECT_EQ(CodeOf(map->Execute(Id("C"))), VxError::NotAvailable);
    EXPECT_EQ(port.writes, 0);
}

TEST_F(CommandNodeTest, IsNoOtherKind)
{
    LoadCommand("<pValue>Reg</pValue><CommandValue>1</CommandValue>");

    EXPECT_EQ(CodeOf(map->Execute(Id("N"))), VxError::TypeMismatch);
    EXPECT_EQ(CodeOf(map->IsDone(Id("N"))), VxError::TypeMismatch);
}

TEST_F(CommandNodeTest, IsNotImplementedWithoutATarget)
{
    LoadCommand("<CommandValue>1</CommandValue>");

    EXPECT_EQ(CodeOf(map->Execute(Id("C"))), VxError::NotSupported);
    EXPECT_EQ(CodeOf(map->IsDone(Id("C"))), VxError::InvalidData);
}

} // namespace
} // namespace genapi
