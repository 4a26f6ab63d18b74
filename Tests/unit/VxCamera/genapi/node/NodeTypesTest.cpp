#include "VxCamera/genapi/node/NodeTypes.h"

#include <gtest/gtest.h>

#include <array>

namespace genapi {
namespace {

constexpr std::array kModes{AccessMode::NotImplemented, AccessMode::NotAvailable, AccessMode::WriteOnly,
                            AccessMode::ReadOnly, AccessMode::ReadWrite};

TEST(AccessModeTest, CombinesToWhatBothAllow)
{
    EXPECT_EQ(Combine(AccessMode::ReadWrite, AccessMode::ReadOnly), AccessMode::ReadOnly);
    EXPECT_EQ(Combine(AccessMode::ReadWrite, AccessMode::WriteOnly), AccessMode::WriteOnly);
    EXPECT_EQ(Combine(AccessMode::ReadOnly, AccessMode::WriteOnly), AccessMode::NotAvailable);
    EXPECT_EQ(Combine(AccessMode::ReadWrite, AccessMode::ReadWrite), AccessMode::ReadWrite);
}

TEST(AccessModeTest, CombinesTheSameInBothOrders)
{
    for (const AccessMode a : kModes)
        for (const AccessMode b : kModes)
            EXPECT_EQ(Combine(a, b), Combine(b, a));
}

TEST(AccessModeTest, LetsWhatIsMissingWin)
{
    for (const AccessMode mode : kModes) {
        EXPECT_EQ(Combine(mode, AccessMode::NotImplemented), AccessMode::NotImplemented);
        const bool isMissing = mode == AccessMode::NotImplemented;
        EXPECT_EQ(Combine(mode, AccessMode::NotAvailable), isMissing ? mode : AccessMode::NotAvailable);
    }
}

} // namespace
} // namespace genapi
