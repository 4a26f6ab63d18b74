#include "VxSimulator/stream/BlockStore.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;

constexpr BlockStore::Time kNow{std::chrono::hours(1)};

std::shared_ptr<Block> MakeBlock(std::uint64_t blockId, gvsp::IdMode mode = gvsp::IdMode::Standard)
{
    FrameOrder order;
    order.blockId = blockId;
    order.idMode = mode;
    order.packetSizeBytes = 1500;
    return std::make_shared<Block>(order, std::vector<std::byte>(100));
}

TEST(BlockStoreTest, KeepsTheLastFewBlocks)
{
    BlockStore store;
    for (std::uint64_t id = 1; id <= BlockStore::kBlocks + 1; ++id)
        store.Add(MakeBlock(id), kNow + id * BlockStore::kKept);

    EXPECT_EQ(store.Find(1, gvsp::IdMode::Standard), nullptr);
    for (std::uint64_t id = 2; id <= BlockStore::kBlocks + 1; ++id) {
        ASSERT_NE(store.Find(id, gvsp::IdMode::Standard), nullptr) << id;
        EXPECT_EQ(store.Find(id, gvsp::IdMode::Standard)->Order().blockId, id);
    }
}

TEST(BlockStoreTest, KeepsMoreOfBlocksThatComeFast)
{
    BlockStore store;
    for (std::uint64_t id = 1; id <= 20; ++id)
        store.Add(MakeBlock(id), kNow + id * std::chrono::milliseconds(10));

    EXPECT_EQ(store.Find(3, gvsp::IdMode::Standard), nullptr);
    EXPECT_NE(store.Find(4, gvsp::IdMode::Standard), nullptr); // 160 ms before the last one
}

TEST(BlockStoreTest, FindsTheYoungestOfTwoBlocksWithOneId)
{
    BlockStore store;
    const auto younger = MakeBlock(1);
    store.Add(MakeBlock(1), kNow);
    store.Add(younger, kNow);

    EXPECT_EQ(store.Find(1, gvsp::IdMode::Standard), younger);
}

TEST(BlockStoreTest, TellsTheKindsOfIdsApart)
{
    BlockStore store;
    store.Add(MakeBlock(1, gvsp::IdMode::Extended), kNow);

    EXPECT_EQ(store.Find(1, gvsp::IdMode::Standard), nullptr);
    EXPECT_NE(store.Find(1, gvsp::IdMode::Extended), nullptr);
}

TEST(BlockStoreTest, GivesTheMemoryOfARetiredBlockBack)
{
    BlockStore store;
    EXPECT_TRUE(store.TakeMemory().empty());
    for (std::uint64_t id = 1; id <= BlockStore::kMostBlocks + 1; ++id)
        store.Add(MakeBlock(id), kNow);

    EXPECT_EQ(store.TakeMemory().size(), 100u);
    EXPECT_TRUE(store.TakeMemory().empty()) << "only once";
}

TEST(BlockStoreTest, DoesNotGiveAwayMemoryThatIsStillBeingSent)
{
    BlockStore store;
    store.Add(MakeBlock(1), kNow);
    const auto inUse = store.Find(1, gvsp::IdMode::Standard);
    for (std::uint64_t id = 2; id <= BlockStore::kMostBlocks + 1; ++id)
        store.Add(MakeBlock(id), kNow);

    EXPECT_TRUE(store.TakeMemory().empty());
    std::vector<std::byte> memory(1500);
    EXPECT_EQ(inUse->WritePacket(1, Sending::Again, memory).size(), 8u + 100);
}

} // namespace
