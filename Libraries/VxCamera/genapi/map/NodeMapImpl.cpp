#include "VxCamera/genapi/map/NodeMapImpl.h"

#include <algorithm>
#include <utility>

#include "VxCamera/genapi/map/FeatureList.h"
#include "VxCamera/genapi/map/NodeFactory.h"

namespace genapi {

namespace {

constexpr std::size_t kMaxNotices = 2'000; // bounds the memory that a broken description can take

// Chosen: real descriptions need some thousand steps to what lies below nodes; hostile ones end here.
constexpr std::size_t kMaxGraphSteps = 2'000'000;

WordOrder OrderFor(const Description& description, RegisterOrder order)
{
    const DescriptionHeader& header = description.Header();
    const bool isOld = header.schemaMajor < 1 || (header.schemaMajor == 1 && header.schemaMinor < 1);
    const bool isBigEndian =
        order == RegisterOrder::BigEndian || (order == RegisterOrder::BigEndianBelowSchema11 && isOld);
    return isBigEndian ? WordOrder::FourBytesBigEndian : WordOrder::AsDescribed;
}

NodeId ToId(std::uint32_t index)
{
    return static_cast<NodeId>(index);
}

std::size_t ToIndex(NodeId id)
{
    return static_cast<std::size_t>(id);
}

} // namespace

NodeMapImpl::NodeMapImpl(std::shared_ptr<const Description> description, IRegisterPort& port,
                         RegisterOrder order, const IVxClock* clock)
    : m_description(std::move(description)),
      m_order(order),
      m_context(port, *this, OrderFor(*m_description, order), clock)
{
    Build();
}

NodeMapImpl::~NodeMapImpl() = default;

void NodeMapImpl::Build()
{
    m_notices = m_description->Notices();
    BuildNodes();
    BuildSelections();
    BuildPolling();
    for (ListedFeature& feature : ListFeatures(*m_description))
        m_features.push_back({ToId(feature.node), std::move(feature.category)});
}

void NodeMapImpl::BuildNodes()
{
    const auto& descriptions = m_description->Nodes();
    m_nodes.reserve(descriptions.size());
    for (std::uint32_t i = 0; i < descriptions.size(); ++i)
        m_nodes.push_back(MakeNode(m_context, ToId(i), descriptions[i]));
    m_registers.resize(m_nodes.size());
    m_entries.resize(m_nodes.size());
    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        Node& node = *m_nodes[i];
        node.Configure(descriptions[i].properties, m_nodes);
        if (!node.Fault().empty() && m_notices.size() < kMaxNotices)
            m_notices.push_back({std::string(node.Info().name), "it is not implemented: " + node.Fault()});
        Register(node);
    }
    const auto device = m_description->Find("Device");
    auto* const devicePort = device ? dynamic_cast<PortNode*>(m_nodes[*device].get()) : nullptr;
    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        m_nodes[i]->InheritDisplay();
        if (m_registers[i] != nullptr && devicePort != nullptr)
            m_registers[i]->SetDefaultPort(*devicePort);
    }
}

void NodeMapImpl::Register(Node& node)
{
    const std::size_t index = ToIndex(node.Id());
    if (node.EventId())
        m_eventNodes.push_back(&node);
    switch (node.Info().type) {
    case ValueType::Port:
        if (auto& port = static_cast<PortNode&>(node); !port.IsDevice() && !port.EventId())
            m_chunkPorts.push_back(&port);
        return;
    case ValueType::Enumeration:
        for (const EnumEntryNode* const entry : static_cast<const EnumerationNode&>(node).Entries())
            m_entries[index].push_back(entry->Id());
        return;
    default:
        m_registers[index] = dynamic_cast<RegisterNode*>(&node);
    }
}

void NodeMapImpl::BuildSelections()
{
    m_selected.resize(m_nodes.size());
    m_selectors.resize(m_nodes.size());
    const auto& descriptions = m_description->Nodes();
    for (std::uint32_t i = 0; i < descriptions.size(); ++i) {
        for (const Property& property : descriptions[i].properties) {
            if (property.element != Element::PSelected || property.target == kNoNode)
                continue;
            m_selected[i].push_back(ToId(property.target));
            m_selectors[property.target].push_back(ToId(i));
        }
    }
}

// The time stands at the feature or at the register; it is the register's value that ages.
void NodeMapImpl::BuildPolling()
{
    std::size_t steps = kMaxGraphSteps;
    for (std::uint32_t i = 0; i < m_nodes.size(); ++i) {
        const Node& node = *m_nodes[i];
        if (node.PollingMs() == 0 || m_registers[i] != nullptr)
            continue;
        const auto nodesBelow = Graph().Below(i);
        if (nodesBelow.size() > steps)
            return;
        steps -= nodesBelow.size();
        for (const std::uint32_t below : nodesBelow)
            if (m_registers[below] != nullptr)
                m_registers[below]->PollAtLeastEvery(node.PollingMs(), node.PollingBlock());
    }
}

DependencyGraph& NodeMapImpl::Graph()
{
    if (!m_graph)
        m_graph.emplace(m_description->Nodes());
    return *m_graph;
}

void NodeMapImpl::Changed(Node& source)
{
    // Chosen: looking at a register costs a fraction of evaluating a node.
    constexpr std::size_t kRegistersPerStep = 16;
    m_context.BeginEpoch();
    const std::size_t index = ToIndex(source.Id());
    const auto affectedNodes = Graph().AffectedBy(static_cast<std::uint32_t>(index));
    for (const std::uint32_t affected : affectedNodes)
        if (m_registers[affected] != nullptr)
            m_registers[affected]->DropCache();
    m_context.Spend(affectedNodes.size());
    if (m_registers[index] != nullptr) {
        DropOverlapping(*m_registers[index]);
        m_context.Spend(m_registers.size() / kRegistersPerStep);
    }
}

// Several nodes may look at the same bytes without the description saying so: bits of one word, for instance.
void NodeMapImpl::DropOverlapping(const RegisterNode& source)
{
    const RegisterNode::Place written = source.LastPlace();
    for (RegisterNode* const node : m_registers) {
        if (node == nullptr || node == &source || !node->IsCached())
            continue;
        const RegisterNode::Place place = node->LastPlace();
        const bool isApart = place.port != written.port ||
                             place.address + static_cast<WideAddress>(place.length) <= written.address ||
                             written.address + static_cast<WideAddress>(written.length) <= place.address;
        if (!isApart)
            node->DropCache();
    }
}

void NodeMapImpl::Forget(Node& node)
{
    m_context.BeginEpoch();
    for (const std::uint32_t below : Graph().Below(static_cast<std::uint32_t>(node.Id())))
        if (m_registers[below] != nullptr)
            m_registers[below]->DropCache();
}

void NodeMapImpl::SetOrder(RegisterOrder order)
{
    m_order = order;
    m_context.SetOrder(OrderFor(*m_description, order));
}

void NodeMapImpl::InvalidateAll()
{
    for (RegisterNode* const node : m_registers)
        if (node != nullptr)
            node->DropCache();
}

void NodeMapImpl::AttachChunks(std::span<const Chunk> chunks)
{
    m_context.BeginOperation();
    for (PortNode* const port : m_chunkPorts) {
        port->Detach();
        const auto id = port->ChunkId();
        const auto isWanted = [&](const Chunk& chunk) { return chunk.id == id; };
        const auto found = std::find_if(chunks.begin(), chunks.end(), isWanted);
        if (id && found != chunks.end())
            port->Attach(found->bytes);
    }
    for (RegisterNode* const node : m_registers)
        if (node != nullptr && node->LastPlace().port != nullptr)
            node->DropCache();
}

void NodeMapImpl::AttachEvent(std::uint64_t id, std::span<const std::byte> bytes)
{
    m_context.BeginOperation();
    std::size_t steps = kMaxGraphSteps;
    for (Node* const node : m_eventNodes) {
        if (node->EventId() != id)
            continue;
        if (auto* const port = dynamic_cast<PortNode*>(node); port != nullptr) {
            port->Attach(bytes);
        } else if (steps > 0) {
            const std::size_t count = Graph().Below(static_cast<std::uint32_t>(ToIndex(node->Id()))).size();
            steps -= std::min(steps, count);
            Forget(*node);
        }
    }
    if (steps == 0)
        InvalidateAll();
    for (RegisterNode* const node : m_registers)
        if (node != nullptr && node->LastPlace().port != nullptr)
            node->DropCache();
}

bool NodeMapImpl::Begin()
{
    m_context.BeginOperation();
    return m_context.Device().IsOpen();
}

VxResult NodeMapImpl::Closed(const Node& node)
{
    return Named(node, m_context.Device().CloseReason());
}

VxResult NodeMapImpl::CheckReadable(Node& node)
{
    if (node.CanBeRead())
        return VxResult::Ok();
    const AccessMode mode = node.Access();
    if (!node.Fault().empty())
        return node.Error(VxError::NotSupported, node.Fault());
    if (mode == AccessMode::NotImplemented)
        return node.Error(VxError::NotSupported, "this camera does not have it");
    if (mode == AccessMode::NotAvailable && !m_context.Awaited().empty())
        return node.Error(VxError::NotAvailable, "its value comes with the data of " +
                                                     std::string(m_context.Awaited()) +
                                                     ", and none are attached to the features");
    if (mode == AccessMode::NotAvailable)
        return node.Error(VxError::NotAvailable, "it is not available in the present state of the camera");
    return node.Error(VxError::NotReadable, "it can only be written");
}

VxResult NodeMapImpl::CheckWritable(Node& node)
{
    const AccessMode mode = node.Access();
    if (IsWritable(mode))
        return VxResult::Ok();
    if (mode == AccessMode::NotImplemented)
        return CheckReadable(node);
    if (!m_context.Lock().empty())
        return node.Error(VxError::NotWritable, "it cannot be written now: \"" +
                                                    std::string(m_context.Lock()) +
                                                    "\" locks it, for instance while the camera streams");
    if (mode == AccessMode::NotAvailable)
        return CheckReadable(node);
    return node.Error(VxError::NotWritable, "it can only be read");
}

VxResult NodeMapImpl::Failed(const Node& node, const VxResult& result)
{
    // What a condition could not find out in time looks like a feature that is not available.
    if (!result.IsOK() && m_context.IsLate())
        return node.Error(VxError::Timeout, m_context.CheckDeadline().GetDescription().Narrow());
    return Named(node, result);
}

VxResult NodeMapImpl::Named(const Node& node, const VxResult& result) const
{
    const std::string& text = result.GetDescription().Narrow();
    if (result.IsOK() || text.starts_with(std::string(node.Info().name) + ": "))
        return result;
    return node.Error(result.Code(), text);
}

} // namespace genapi
