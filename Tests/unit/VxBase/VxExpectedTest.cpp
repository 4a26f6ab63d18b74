#include "VxBase/VxExpected.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

TEST(VxExpectedTest, HoldsAValue)
{
    const VxExpected<std::string> expected(std::string("text"));

    EXPECT_TRUE(expected.HasValue());
    ASSERT_TRUE(expected);
    EXPECT_EQ(*expected, "text");
    EXPECT_EQ(expected->size(), 4u);
    EXPECT_TRUE(expected.Result().IsOK());
}

TEST(VxExpectedTest, HoldsAFailure)
{
    const VxExpected<std::string> expected(VxResult(VxError::NotFound, "no such file"));

    EXPECT_FALSE(expected.HasValue());
    EXPECT_FALSE(expected);
    EXPECT_EQ(expected.Error().Code(), VxError::NotFound);
    EXPECT_EQ(expected.Result().Code(), VxError::NotFound);
    EXPECT_EQ(expected.Result().GetDescription(), "no such file");
}

TEST(VxExpectedTest, ACodeAloneIsAFailure)
{
    const VxExpected<int> expected(VxError::Timeout);

    EXPECT_FALSE(expected);
    EXPECT_EQ(expected.Error().Code(), VxError::Timeout);
    EXPECT_TRUE(expected.Error().GetDescription().IsEmpty());
}

TEST(VxExpectedTest, GivesAnotherValueInsteadOfAFailure)
{
    EXPECT_EQ(VxExpected<int>(5).ValueOr(7), 5);
    EXPECT_EQ(VxExpected<int>(VxError::Timeout).ValueOr(7), 7);
}

TEST(VxExpectedTest, TheValueCanBeChangedAndMovedOut)
{
    VxExpected<std::unique_ptr<int>> expected(std::make_unique<int>(1));

    **expected = 2;
    const std::unique_ptr<int> taken = *std::move(expected);

    EXPECT_EQ(*taken, 2);
}

} // namespace
