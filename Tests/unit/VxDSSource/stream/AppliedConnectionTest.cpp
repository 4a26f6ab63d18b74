#include "VxDSSource/stream/AppliedConnection.h"

#include "VxDSSource/filter/SettingsRecord.h"

#include <gtest/gtest.h>

namespace vxds {
namespace {

class AppliedConnectionTest : public testing::Test {
protected:
    AppliedConnectionTest()
    {
        m_settings.Store(Setting::DeviceId, std::wstring(L"cam"));
        m_applied.connectionId = L"cam";
    }

    void Store(Setting setting, std::uint32_t number) { m_settings.Store(setting, number); }
    void Store(Setting setting, const wchar_t* text) { m_settings.Store(setting, std::wstring(text)); }

    [[nodiscard]] bool Differs(bool hasDevice) const { return m_applied.DiffersFrom(m_settings, hasDevice); }

    SettingsRecord m_settings;
    AppliedConnection m_applied;
};

TEST_F(AppliedConnectionTest, DiffersByTheDeviceIdCharacterByCharacter)
{
    EXPECT_FALSE(Differs(true));
    for (const wchar_t* other : {L"", L"Cam", L"cam ", L"ca", L"camera"}) {
        Store(Setting::DeviceId, other);
        EXPECT_TRUE(Differs(true));
    }
}

TEST_F(AppliedConnectionTest, DiffersByTheChannelInEveryRole)
{
    Store(Setting::ParamChannel, 1);
    for (const std::uint32_t role : {0u, 1u, 2u, 5u}) {
        Store(Setting::Role, role);
        EXPECT_TRUE(Differs(false)) << role;
    }
}

TEST_F(AppliedConnectionTest, DiffersAsControllerByTheSourceOrAMissingDevice)
{
    m_applied.sourceSelector = L"A";
    Store(Setting::ParamSource, L"A");
    EXPECT_FALSE(Differs(true));
    EXPECT_TRUE(Differs(false));

    Store(Setting::ParamSource, L"B");
    EXPECT_TRUE(Differs(true));
}

TEST_F(AppliedConnectionTest, DiffersInEveryOtherRoleWhileThereIsADevice)
{
    Store(Setting::MulticastAddress, L"");
    Store(Setting::MulticastPort, 0u);
    for (const std::uint32_t role : {1u, 2u, 5u}) {
        Store(Setting::Role, role);
        EXPECT_TRUE(Differs(true)) << role;
        EXPECT_FALSE(Differs(false)) << role;
    }
}

TEST_F(AppliedConnectionTest, DiffersAsUnicastReceiverWithAnyPort)
{
    Store(Setting::Role, 1);
    EXPECT_FALSE(Differs(false));

    Store(Setting::UnicastPort, 5000);
    EXPECT_TRUE(Differs(false));
}

TEST_F(AppliedConnectionTest, DiffersAsMulticastReceiverWithAnyGroupOrPort)
{
    Store(Setting::Role, 2);
    EXPECT_TRUE(Differs(false)) << "the default group and port";

    Store(Setting::MulticastAddress, L"");
    EXPECT_TRUE(Differs(false)) << "the default port";

    Store(Setting::MulticastPort, 0u);
    EXPECT_FALSE(Differs(false));
}

TEST_F(AppliedConnectionTest, NeverDiffersByEndpointsInAnUnknownRole)
{
    Store(Setting::Role, 5);
    Store(Setting::UnicastPort, 5000);
    EXPECT_FALSE(Differs(false));
}

} // namespace
} // namespace vxds
