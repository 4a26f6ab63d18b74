#include "fuzz/FuzzTarget.h"

#include "VxCamera/genapi/map/NodeMap.h"

#include "support/genapi/FakeRegisterPort.h"
#include "support/network/FakeClock.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace {

// Chosen: enough of a map; a fuzzer makes up more inputs instead.
constexpr std::size_t kMostNodes = 200;

/// Everything that a client can ask of a node, and back what was read.
void Use(genapi::NodeMap& map, genapi::NodeId node)
{
    static_cast<void>(map.Access(node));
    if (const auto text = map.ToText(node))
        static_cast<void>(map.FromText(node, *text));
    if (const auto value = map.GetInteger(node))
        static_cast<void>(map.SetInteger(node, *value));
    if (const auto value = map.GetFloat(node))
        static_cast<void>(map.SetFloat(node, *value));
    static_cast<void>(map.GetIntegerLimits(node));
    static_cast<void>(map.GetFloatLimits(node));
    static_cast<void>(map.GetBytes(node));
    static_cast<void>(map.GetEntry(node));
    static_cast<void>(map.Selected(node));
    static_cast<void>(map.Execute(node));
    static_cast<void>(map.IsDone(node));
}

void UseAll(genapi::NodeMap& map)
{
    const std::size_t count = std::min(map.NodeCount(), kMostNodes);
    for (std::size_t i = 0; i < count; ++i)
        Use(map, static_cast<genapi::NodeId>(i));
}

/// Data that came with an image and with an event; the numbers are those of the inputs in corpus/.
void Attach(genapi::NodeMap& map)
{
    constexpr std::array kData{std::byte{1}, std::byte{2}, std::byte{0x80}, std::byte{0xFF}, std::byte{5}};
    constexpr std::uint64_t kChunkId = 0x0A;
    constexpr std::uint64_t kEventId = 0x9001;
    const std::array chunks{genapi::Chunk{.id = kChunkId, .bytes = kData}};
    map.AttachChunks(chunks);
    map.AttachEvent(kEventId, kData);
}

void Load(fuzz::Bytes bytes)
{
    FakeRegisterPort port;
    FakeClock clock;
    auto loaded = genapi::NodeMap::Load(fuzz::TextOf(bytes), port,
                                        genapi::RegisterOrder::BigEndianBelowSchema11, &clock);
    if (!loaded) {
        fuzz::Require(!loaded.Error().GetDescription().IsEmpty(), "refused without a reason");
        return;
    }
    genapi::NodeMap& map = **loaded;
    UseAll(map);
    clock.Advance(std::chrono::hours(1)); // values with a polling time are over
    Attach(map);
    map.SetRegisterOrder(genapi::RegisterOrder::BigEndian);
    map.SetCaching(false);
    UseAll(map);
    for (const genapi::Feature& feature : map.Features())
        fuzz::Require(static_cast<std::size_t>(feature.node) < map.NodeCount(), "a feature that is no node");
    map.InvalidateAll();
}

const fuzz::Registration kTarget("xml", Load);

} // namespace
