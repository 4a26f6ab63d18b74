#include "VxCamera/wire/gvcp/Status.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;

TEST(StatusTest, TextHasNameAndNumber)
{
    EXPECT_EQ(StatusText(Status::Success), "success (0x0000)");
    EXPECT_EQ(StatusText(Status::AccessDenied), "access denied (0x8006)");
    EXPECT_EQ(StatusText(Status::Error), "error (0x8FFF)");
}

TEST(StatusTest, TextOfAnUnknownStatusHasItsNumber)
{
    EXPECT_EQ(StatusText(static_cast<Status>(0x1234)), "unknown status (0x1234)");
}

TEST(StatusTest, OnlySuccessAndPacketSentAgainAreGood)
{
    EXPECT_TRUE(IsGood(Status::Success));
    EXPECT_TRUE(IsGood(Status::PacketResend));
    EXPECT_FALSE(IsGood(Status::Busy));
    EXPECT_FALSE(IsGood(Status::PacketUnavailable));
    EXPECT_FALSE(IsGood(static_cast<Status>(0x0001)));
}

} // namespace
