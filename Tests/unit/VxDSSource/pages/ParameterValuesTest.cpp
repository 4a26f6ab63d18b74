#include "VxDSSource/pages/ParameterValues.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using pages::KernelEntryOf;
using pages::KernelSizeOf;

TEST(KernelEntryOfTest, CountsEvenSizesAsTheNextSmaller)
{
    EXPECT_EQ(KernelEntryOf(0), 0u);
    EXPECT_EQ(KernelEntryOf(1), 0u);
    EXPECT_EQ(KernelEntryOf(2), 0u);
    EXPECT_EQ(KernelEntryOf(3), 1u);
    EXPECT_EQ(KernelEntryOf(4), 1u);
    EXPECT_EQ(KernelEntryOf(5), 2u);
    EXPECT_EQ(KernelEntryOf(6), 2u);
}

TEST(KernelEntryOfTest, HasNoEntryForOtherSizes)
{
    for (const std::int32_t size : {7, 8, -1, -2, -3, std::numeric_limits<std::int32_t>::max(),
                                    std::numeric_limits<std::int32_t>::min()})
        EXPECT_FALSE(KernelEntryOf(size)) << size;
}

TEST(KernelSizeOfTest, GivesTheSizeOfTheEntry)
{
    EXPECT_EQ(KernelSizeOf(0), 0);
    EXPECT_EQ(KernelSizeOf(1), 3);
    EXPECT_EQ(KernelSizeOf(2), 5);
}

} // namespace
