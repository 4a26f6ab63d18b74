#include "VxSimulator/device/ControlPrivilege.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using namespace std::chrono_literals;
using gvcp::Status;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

constexpr Ipv4Endpoint kFirst{Ipv4Address(10, 0, 0, 1), 50000};
constexpr Ipv4Endpoint kSecond{Ipv4Address(10, 0, 0, 2), 50000};
constexpr Ipv4Endpoint kFirstsOtherSocket{Ipv4Address(10, 0, 0, 1), 50001};
constexpr ControlPrivilege::Time kStart{1h};

TEST(ControlPrivilegeTest, IsFreeAtFirst)
{
    const ControlPrivilege privilege;

    EXPECT_EQ(privilege.Value(), 0u);
    EXPECT_FALSE(privilege.Owner());
    EXPECT_TRUE(privilege.MayRead(kFirst));
    EXPECT_FALSE(privilege.MayWrite(kFirst));
    EXPECT_FALSE(privilege.ExpiryTime(3s));
}

TEST(ControlPrivilegeTest, ControlIsTakenByTheFirstWhoAsks)
{
    ControlPrivilege privilege;

    EXPECT_EQ(privilege.Write(kFirst, 2, kStart), Status::Success);
    EXPECT_EQ(privilege.Write(kSecond, 2, kStart), Status::AccessDenied);

    EXPECT_EQ(privilege.Owner(), kFirst);
    EXPECT_EQ(privilege.Value(), 2u);
    EXPECT_TRUE(privilege.MayWrite(kFirst));
    EXPECT_FALSE(privilege.MayWrite(kSecond));
    EXPECT_TRUE(privilege.MayRead(kSecond));
}

TEST(ControlPrivilegeTest, AnotherSocketOfTheSameMachineIsAnotherApplication)
{
    ControlPrivilege privilege;
    ASSERT_EQ(privilege.Write(kFirst, 2, kStart), Status::Success);

    EXPECT_EQ(privilege.Write(kFirstsOtherSocket, 2, kStart), Status::AccessDenied);
    EXPECT_FALSE(privilege.MayWrite(kFirstsOtherSocket));
}

TEST(ControlPrivilegeTest, ExclusiveAccessKeepsOthersFromReading)
{
    ControlPrivilege privilege;

    EXPECT_EQ(privilege.Write(kFirst, 1, kStart), Status::Success);

    EXPECT_TRUE(privilege.MayRead(kFirst));
    EXPECT_FALSE(privilege.MayRead(kSecond));
}

TEST(ControlPrivilegeTest, TheOwnerMayChangeItsPrivilege)
{
    ControlPrivilege privilege;
    ASSERT_EQ(privilege.Write(kFirst, 1, kStart), Status::Success);

    EXPECT_EQ(privilege.Write(kFirst, 2, kStart), Status::Success);

    EXPECT_TRUE(privilege.MayRead(kSecond));
}

TEST(ControlPrivilegeTest, OnlyTheOwnerReleasesControl)
{
    ControlPrivilege privilege;
    ASSERT_EQ(privilege.Write(kFirst, 2, kStart), Status::Success);

    EXPECT_EQ(privilege.Write(kSecond, 0, kStart), Status::AccessDenied);
    EXPECT_EQ(privilege.Owner(), kFirst);
    EXPECT_EQ(privilege.Write(kFirst, 0, kStart), Status::Success);
    EXPECT_FALSE(privilege.Owner());
    EXPECT_EQ(privilege.Value(), 0u);
    EXPECT_EQ(privilege.Write(kSecond, 2, kStart), Status::Success);
}

TEST(ControlPrivilegeTest, SwitchoverIsNotOffered)
{
    ControlPrivilege privilege;

    EXPECT_EQ(privilege.Write(kFirst, 0xABCD0006, kStart), Status::Success);
    EXPECT_EQ(privilege.Value(), 2u);
    EXPECT_EQ(privilege.Write(kFirst, 4, kStart), Status::Success);
    EXPECT_FALSE(privilege.Owner()) << "neither control nor exclusive access";
}

TEST(ControlPrivilegeTest, ControlIsLostBySilenceForLongerThanTheTimeout)
{
    ControlPrivilege privilege;
    ASSERT_EQ(privilege.Write(kFirst, 2, kStart), Status::Success);

    EXPECT_EQ(privilege.ExpiryTime(3s), kStart + 3s);
    EXPECT_FALSE(privilege.Expire(kStart + 3s, 3s));
    EXPECT_TRUE(privilege.Expire(kStart + 3s + 1ns, 3s));
    EXPECT_FALSE(privilege.Owner());
    EXPECT_FALSE(privilege.Expire(kStart + 4s, 3s)) << "only once";
}

TEST(ControlPrivilegeTest, EveryCommandOfTheOwnerProlongsControl)
{
    ControlPrivilege privilege;
    ASSERT_EQ(privilege.Write(kFirst, 2, kStart), Status::Success);

    privilege.Touch(kFirst, kStart + 2s);
    privilege.Touch(kSecond, kStart + 4s);

    EXPECT_EQ(privilege.ExpiryTime(3s), kStart + 5s);
}

} // namespace
