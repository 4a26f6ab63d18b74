#pragma once

#include "VxCamera/genapi/xml/DescriptionTypes.h"

#include <cstdint>
#include <span>
#include <vector>

namespace genapi {

/// Which registers must be read again when a node has changed.
///
/// Values live in registers only; everything else is computed from them each time. So the graph answers one
/// question: from a changed node up to all that is computed from it, over to what it invalidates, selects or
/// limits, and from there down to the registers behind those.
///
/// Owner:  the map's implementation, by value.
/// Thread: under the map's lock.
class DependencyGraph {
public:
    explicit DependencyGraph(const std::vector<NodeDescription>& nodes);

    /// @return  indices of nodes, in no particular order, without `source` itself; valid until the next call
    [[nodiscard]] std::span<const std::uint32_t> AffectedBy(std::uint32_t source);

    /// @return  the node and all that its value comes from; valid until the next call
    [[nodiscard]] std::span<const std::uint32_t> Below(std::uint32_t node);

private:
    /// Edges of all nodes one after the other, those of node n from starts[n] to starts[n + 1].
    struct Edges {
        std::vector<std::uint32_t> starts;
        std::vector<std::uint32_t> targets;

        [[nodiscard]] std::span<const std::uint32_t> Of(std::uint32_t node) const;
    };
    struct Pair {
        std::uint32_t from;
        std::uint32_t to;
    };

    [[nodiscard]] static Edges Sort(std::size_t nodeCount, const std::vector<Pair>& pairs);
    void Climb(std::uint32_t source);
    void Descend(std::uint32_t node);

    Edges m_users;   // computed from the node; the address of their registers depends on it
    Edges m_effects; // their values may change with the node, in the camera
    Edges m_sources; // what the node's value comes from

    // Scratch of one call: a node is marked when its mark equals the call's number.
    std::vector<std::uint32_t> m_climbed;
    std::vector<std::uint32_t> m_descended;
    std::uint32_t m_call = 0;
    std::vector<std::uint32_t> m_stack;
    std::vector<std::uint32_t> m_result;
};

} // namespace genapi
