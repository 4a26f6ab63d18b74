#include "VxCamera/genapi/xml/DescriptionCache.h"

#include "support/Latch.h"
#include "support/genapi/NodeMapFixture.h"
#include "support/genapi/ZipBytes.h"

#include <thread>

namespace genapi {
namespace {

std::string FileOf(int number)
{
    return Describe("<Integer Name=\"I\"><Value>" + std::to_string(number) + "</Value></Integer>");
}

TEST(DescriptionCacheTest, ReadsAFileOnce)
{
    DescriptionCache cache;

    const auto first = ValueOf(cache.Get(FileOf(1)));
    const auto second = ValueOf(cache.Get(FileOf(1)));

    EXPECT_EQ(first, second); // the same object
    EXPECT_EQ(cache.Count(), 1u);
}

TEST(DescriptionCacheTest, TellsFilesOfOneLengthApart)
{
    DescriptionCache cache;

    const auto first = ValueOf(cache.Get(FileOf(1)));
    const auto second = ValueOf(cache.Get(FileOf(2)));

    EXPECT_NE(first, second);
    EXPECT_EQ(first->Nodes()[*first->Find("I")].properties[0].text, "1");
    EXPECT_EQ(second->Nodes()[*second->Find("I")].properties[0].text, "2");
}

TEST(DescriptionCacheTest, UnpacksAnArchiveOnce)
{
    DescriptionCache cache;
    const std::string archive = zip::Archive({zip::File("camera.xml", FileOf(1))});

    EXPECT_EQ(ValueOf(cache.Get(archive)), ValueOf(cache.Get(archive)));
}

TEST(DescriptionCacheTest, KeepsNoFailure)
{
    DescriptionCache cache;

    EXPECT_EQ(CodeOf(cache.Get("no description")), VxError::InvalidData);
    EXPECT_EQ(cache.Count(), 0u);
}

TEST(DescriptionCacheTest, ForgetsWhatWasNotAskedForLongest)
{
    DescriptionCache cache;
    const auto first = ValueOf(cache.Get(FileOf(1)));
    const std::weak_ptr<const Description> second = ValueOf(cache.Get(FileOf(2)));
    for (int i = 3; i <= 16; ++i)
        std::ignore = cache.Get(FileOf(i));
    EXPECT_EQ(ValueOf(cache.Get(FileOf(1))), first);

    std::ignore = cache.Get(FileOf(17));

    EXPECT_EQ(cache.Count(), 16u);
    EXPECT_TRUE(second.expired());
    EXPECT_EQ(ValueOf(cache.Get(FileOf(1))), first);
}

TEST(DescriptionCacheTest, BoundsTheMemory)
{
    DescriptionCache cache;
    const auto large = [](char c) {
        return Describe("<Integer Name=\"I\"><Value>1</Value><ToolTip>" + std::string(15 << 20, c) +
                        "</ToolTip></Integer>");
    };

    const auto first = ValueOf(cache.Get(large('a'))); // 30 MB each: the file, and its text
    const auto second = ValueOf(cache.Get(large('b')));
    const auto third = ValueOf(cache.Get(large('c')));

    EXPECT_EQ(cache.Count(), 2u);
    EXPECT_EQ(ValueOf(cache.Get(large('c'))), third);
    EXPECT_EQ(first->Nodes().size(), 2u); // whoever uses one keeps it
}

TEST(DescriptionCacheTest, HandsOutWhatItCannotKeep)
{
    DescriptionCache cache;
    const std::string huge = Describe("<Integer Name=\"I\"><Value>1</Value><ToolTip>" +
                                      std::string(33 << 20, 'x') + "</ToolTip></Integer>");

    EXPECT_TRUE(cache.Get(huge));
    EXPECT_EQ(cache.Count(), 0u);
}

TEST(DescriptionCacheTest, GivesThreadsTheSameDescription)
{
    DescriptionCache cache;
    constexpr int kThreads = 4;
    Latch start(kThreads);
    std::shared_ptr<const Description> got[kThreads];
    std::vector<std::thread> threads;
    for (auto& mine : got)
        threads.emplace_back([&] {
            start.count_down();
            start.wait();
            for (int i = 0; i < 50; ++i)
                mine = ValueOf(cache.Get(FileOf(1 + i % 10)));
            mine = ValueOf(cache.Get(FileOf(7)));
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(cache.Count(), 10u);
    for (const auto& one : got) {
        EXPECT_EQ(one, got[0]);
        EXPECT_EQ(one->Nodes()[*one->Find("I")].properties[0].text, "7");
    }
}

} // namespace
} // namespace genapi
