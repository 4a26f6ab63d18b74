#include "VxCamera/wire/gvsp/PayloadType.h"

#include <gtest/gtest.h>

namespace {

using gvsp::PayloadType;

TEST(PayloadTypeTest, AnImageHasAnImageLeaderAndNoChunks)
{
    constexpr PayloadType type{0x0001};

    EXPECT_EQ(type.Type(), PayloadType::kImage);
    EXPECT_TRUE(type.HasImageLeader());
    EXPECT_FALSE(type.HasChunks());
}

TEST(PayloadTypeTest, AnImageWithChunksIsStillAnImage)
{
    constexpr PayloadType type{0x4001};

    EXPECT_EQ(type.Type(), PayloadType::kImage);
    EXPECT_TRUE(type.HasImageLeader());
    EXPECT_TRUE(type.HasChunks());
}

TEST(PayloadTypeTest, ChunkTypesHaveChunksWithoutTheMark)
{
    EXPECT_TRUE(PayloadType{0x0004}.HasChunks());
    EXPECT_FALSE(PayloadType{0x0004}.HasImageLeader());
    EXPECT_TRUE(PayloadType{0x0005}.HasChunks());
    EXPECT_TRUE(PayloadType{0x0005}.HasImageLeader());
}

TEST(PayloadTypeTest, ADeviceSpecificTypeIsNotTakenForAnImage)
{
    constexpr PayloadType type{0x8001};

    EXPECT_EQ(type.Type(), 0x8001);
    EXPECT_FALSE(type.HasImageLeader());
    EXPECT_FALSE(type.HasChunks());
}

} // namespace
