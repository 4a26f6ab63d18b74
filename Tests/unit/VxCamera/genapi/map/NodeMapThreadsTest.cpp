#include "VxCamera/genapi/map/NodeMap.h"

#include "support/Latch.h"
#include "support/genapi/NodeMapFixture.h"

#include <thread>

namespace genapi {
namespace {

/// A camera that answers when it is allowed to.
class SlowPort final : public IRegisterPort {
public:
    VxResult Read(std::uint64_t, std::span<std::byte> bytes) override
    {
        isAsked.count_down();
        mayAnswer.wait();
        std::fill(bytes.begin(), bytes.end(), std::byte{7});
        return VxResult::Ok();
    }
    VxResult Write(std::uint64_t, std::span<const std::byte>) override { return VxResult::Ok(); }

    Latch isAsked{1};
    Latch mayAnswer{1};
};

TEST(NodeMapThreadsTest, ServesOtherThreadsOnceASlowCameraHasAnswered)
{
    SlowPort port;
    const auto map =
        *NodeMap::Load(Describe("<IntReg Name=\"R\"><Address>0</Address><Length>1</Length></IntReg>"
                                "<Integer Name=\"V\"><Value>3</Value></Integer>"),
                       port);
    std::int64_t slow = 0;
    std::int64_t quick = 0;
    std::thread reader([&] { slow = map->GetInteger(*map->Find("R")).ValueOr(-1); });
    port.isAsked.wait();
    std::thread other([&] { quick = map->GetInteger(*map->Find("V")).ValueOr(-1); });

    port.mayAnswer.count_down();
    reader.join();
    other.join();

    EXPECT_EQ(slow, 7);
    EXPECT_EQ(quick, 3);
}

TEST(NodeMapThreadsTest, AnswersQuestionsAboutNamesWhileACameraIsSlow)
{
    SlowPort port;
    const auto map = *NodeMap::Load(
        Describe("<IntReg Name=\"R\"><Address>0</Address><Length>1</Length><Unit>px</Unit></IntReg>"), port);
    std::thread reader([&] { std::ignore = map->GetInteger(*map->Find("R")); });
    port.isAsked.wait();

    EXPECT_EQ(map->Info(*map->Find("R")).unit, "px"); // would wait for ever if it took the lock

    port.mayAnswer.count_down();
    reader.join();
}

TEST(NodeMapThreadsTest, SerialisesReadersAndWriters)
{
    FakeRegisterPort port; // not made for several threads: the map has to keep them apart
    const auto map = *NodeMap::Load(
        Describe("<IntReg Name=\"A\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                 "<Cachable>NoCache</Cachable></IntReg>"
                 "<MaskedIntReg Name=\"B\"><Address>4</Address><Length>4</Length><LSB>0</LSB><MSB>15</MSB>"
                 "<AccessMode>RW</AccessMode></MaskedIntReg>"
                 "<MaskedIntReg Name=\"C\"><Address>4</Address><Length>4</Length><LSB>16</LSB><MSB>31</MSB>"
                 "<AccessMode>RW</AccessMode></MaskedIntReg>"),
        port);
    const auto work = [&](const char* name) {
        const NodeId node = *map->Find(name);
        for (int i = 0; i < 2000; ++i) {
            std::ignore = map->SetInteger(node, i);
            std::ignore = map->GetInteger(node);
        }
    };
    std::thread a(work, "A");
    std::thread b(work, "B");
    std::thread c(work, "C");
    a.join();
    b.join();
    c.join();

    EXPECT_EQ(ValueOf(map->GetInteger(*map->Find("B"))), 1999);
    EXPECT_EQ(ValueOf(map->GetInteger(*map->Find("C"))), 1999);
}

TEST(NodeMapThreadsTest, LetsEveryThreadUseEveryFeature)
{
    FakeRegisterPort port;
    FakeClock clock;
    const auto map = *NodeMap::Load(
        Describe("<Integer Name=\"I\"><pValue>R</pValue><pMax>Max</pMax><pIsLocked>B</pIsLocked></Integer>"
                 "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                 "<PollingTime>10</PollingTime></IntReg>"
                 "<IntSwissKnife Name=\"Max\"><pVariable Name=\"E\">E</pVariable><Formula>E*100+100</Formula>"
                 "</IntSwissKnife>"
                 "<Boolean Name=\"B\"><Value>0</Value></Boolean>"
                 "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
                 "<EnumEntry Name=\"Z\"><Value>1</Value></EnumEntry><Value>0</Value><pSelected>I</pSelected>"
                 "</Enumeration>"
                 "<Converter Name=\"F\"><FormulaTo>FROM*10</FormulaTo><FormulaFrom>TO/10</FormulaFrom>"
                 "<pValue>R</pValue></Converter>"
                 "<StringReg "
                 "Name=\"S\"><Address>8</Address><Length>8</Length><AccessMode>RW</AccessMode></StringReg>"
                 "<Command Name=\"C\"><pValue>R</pValue><CommandValue>1</CommandValue></Command>"),
        port, RegisterOrder::AsDescribed, &clock);
    const auto work = [&](int number) {
        for (int i = 0; i < 200; ++i) {
            for (const char* name : {"I", "B", "E", "F", "S", "C", "Max"}) {
                const NodeId node = *map->Find(name);
                std::ignore = map->FromText(node, std::to_string((i + number) % 2));
                std::ignore = map->ToText(node);
                std::ignore = map->Access(node);
                std::ignore = map->GetIntegerLimits(node);
                std::ignore = map->IsDone(node);
            }
            clock.Advance(std::chrono::milliseconds(1));
            if (i % 50 == 0)
                map->InvalidateAll();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();

    ASSERT_TRUE(map->FromText(*map->Find("B"), "false").IsOK());
    ASSERT_TRUE(map->FromText(*map->Find("E"), "Z").IsOK());
    ASSERT_TRUE(map->SetInteger(*map->Find("I"), 200).IsOK());
    EXPECT_EQ(ValueOf(map->ToText(*map->Find("F"))), "20");
}

} // namespace
} // namespace genapi
