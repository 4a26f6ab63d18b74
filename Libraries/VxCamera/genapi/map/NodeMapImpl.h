#pragma once

#include "VxCamera/genapi/map/DependencyGraph.h"
#include "VxCamera/genapi/map/NodeMap.h"
#include "VxCamera/genapi/node/EnumerationNode.h"
#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/node/RegisterNode.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace genapi {

/// The nodes of a map and what connects them.
///
/// Owner:  NodeMap.
/// Thread: under m_mutex, which NodeMap takes; what Build made is constant afterwards.
class NodeMapImpl final : public IChangeListener {
public:
    NodeMapImpl(std::shared_ptr<const Description> description, IRegisterPort& port, RegisterOrder order,
                const IVxClock* clock);
    ~NodeMapImpl();

    void Changed(Node& source) override;
    void Forget(Node& node) override;

    [[nodiscard]] Node& At(NodeId node) const { return *m_nodes[static_cast<std::size_t>(node)]; }

    /// Starts an operation of a user.
    /// @return  false when the port leads to no camera any more: then the answer is what Closed says
    [[nodiscard]] bool Begin();
    [[nodiscard]] VxResult Closed(const Node& node);

    /// OK when the node can be read or written now, else a result that says why not.
    [[nodiscard]] VxResult CheckReadable(Node& node);
    [[nodiscard]] VxResult CheckWritable(Node& node);

    /// What the user is told of an operation on a node: TIMEOUT when it lasted too long, else the result as
    /// it is, with the node's name in front of a description that begins with another's.
    [[nodiscard]] VxResult Failed(const Node& node, const VxResult& result);

    void InvalidateAll();
    void SetOrder(RegisterOrder order);
    void AttachChunks(std::span<const Chunk> chunks);
    void AttachEvent(std::uint64_t id, std::span<const std::byte> bytes);

    mutable std::recursive_mutex m_mutex;
    const std::shared_ptr<const Description> m_description; // shared with other maps of the same camera model
    std::vector<Feature> m_features;
    std::vector<Notice> m_notices;
    std::vector<std::vector<NodeId>> m_selected;  // by node
    std::vector<std::vector<NodeId>> m_selectors; // by node
    std::vector<std::vector<NodeId>> m_entries;   // by node
    RegisterOrder m_order;
    NodeContext m_context;

private:
    [[nodiscard]] VxResult Named(const Node& node, const VxResult& result) const;
    void Build();
    void BuildNodes();
    void Register(Node& node);
    void BuildSelections();
    void BuildPolling();
    void DropOverlapping(const RegisterNode& source);
    [[nodiscard]] DependencyGraph& Graph();

    NodeTable m_nodes;
    std::vector<RegisterNode*> m_registers; // by node; borrowed from m_nodes; null for other kinds
    std::vector<PortNode*> m_chunkPorts;    // borrowed from m_nodes, like the next ones
    std::vector<Node*> m_eventNodes;        // nodes that change with an event, ports for events among them
    std::optional<DependencyGraph> m_graph; // made when it is needed first
};

} // namespace genapi
