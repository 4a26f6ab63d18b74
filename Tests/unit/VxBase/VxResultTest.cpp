#include "VxBase/VxResult.h"

#include <gtest/gtest.h>

namespace {

TEST(VxResultTest, OneThatWasNeverAssignedIsNotOk)
{
    const VxResult result;

    EXPECT_FALSE(result.IsOK());
    EXPECT_EQ(result.GetCode(), 1541u);
    EXPECT_EQ(result.GetCodeString(), "NOT_INITIALIZED");
    EXPECT_TRUE(result.GetDescription().IsEmpty());
}

TEST(VxResultTest, OkHasCodeZero)
{
    const VxResult result = VxResult::Ok();

    EXPECT_TRUE(result.IsOK());
    EXPECT_EQ(result.GetCode(), 0u);
    EXPECT_EQ(result.GetCodeString(), "OK");
}

TEST(VxResultTest, AFailureHasCodeNameAndSentence)
{
    const VxResult result(VxError::PortInUse, "port 3956 is in use");

    EXPECT_FALSE(result.IsOK());
    EXPECT_EQ(result.Code(), VxError::PortInUse);
    EXPECT_EQ(result.GetCode(), 0x0615u);
    EXPECT_EQ(result.GetCodeString(), "PORT_IN_USE");
    EXPECT_EQ(result.GetDescription(), "port 3956 is in use");
}

TEST(VxResultTest, CanBeCopiedByAssignment)
{
    VxResult result;

    result = VxResult(VxError::Busy, "later");

    EXPECT_EQ(result.Code(), VxError::Busy);
    EXPECT_EQ(result.GetDescription(), "later");
}

} // namespace
