#include "fuzz/FuzzTarget.h"

#include "VxCamera/genapi/map/NodeMap.h"

#include "support/genapi/FakeRegisterPort.h"

#include <algorithm>

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
    static_cast<void>(map.IsDone(node));
}

void Load(fuzz::Bytes bytes)
{
    FakeRegisterPort port;
    auto loaded =
        genapi::NodeMap::Load(fuzz::TextOf(bytes), port, genapi::RegisterOrder::BigEndianBelowSchema11);
    if (!loaded) {
        fuzz::Require(!loaded.Error().GetDescription().IsEmpty(), "refused without a reason");
        return;
    }
    genapi::NodeMap& map = **loaded;
    const std::size_t count = std::min(map.NodeCount(), kMostNodes);
    for (std::size_t i = 0; i < count; ++i)
        Use(map, static_cast<genapi::NodeId>(i));
    for (const genapi::Feature& feature : map.Features())
        fuzz::Require(static_cast<std::size_t>(feature.node) < map.NodeCount(), "a feature that is no node");
    map.InvalidateAll();
}

const fuzz::Registration kTarget("xml", Load);

} // namespace
