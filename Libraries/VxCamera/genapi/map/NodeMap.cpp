#include "VxCamera/genapi/map/NodeMap.h"

#include <utility>

#include "VxCamera/genapi/map/NodeMapImpl.h"
#include "VxCamera/genapi/node/CommandNode.h"

namespace genapi {

namespace {

using Guard = std::lock_guard<std::recursive_mutex>;

/// A read by a user: asks for access first, names the feature in errors.
template <typename Function>
auto Read(NodeMapImpl& map, NodeId id, Function function) -> decltype(function(map.At(id)))
{
    const Guard guard(map.m_mutex);
    Node& node = map.At(id);
    if (!map.Begin())
        return map.Closed(node);
    if (const VxResult access = map.CheckReadable(node); !access.IsOK())
        return map.Failed(node, access);
    auto value = function(node);
    if (!value)
        return map.Failed(node, value.Error());
    return value;
}

/// A write by a user: likewise.
template <typename Function>
VxResult Write(NodeMapImpl& map, NodeId id, Function function)
{
    const Guard guard(map.m_mutex);
    Node& node = map.At(id);
    if (!map.Begin())
        return map.Closed(node);
    if (const VxResult access = map.CheckWritable(node); !access.IsOK())
        return map.Failed(node, access);
    return map.Failed(node, function(node));
}

/// A question about limits: answered for features that cannot be used now as well.
template <typename Function>
auto Ask(NodeMapImpl& map, NodeId id, Function function) -> decltype(function(map.At(id)))
{
    const Guard guard(map.m_mutex);
    Node& node = map.At(id);
    if (!map.Begin())
        return map.Closed(node);
    auto value = function(node);
    if (!value)
        return map.Failed(node, value.Error());
    return value;
}

VxResult IsNo(const Node& node, std::string_view kind)
{
    return node.Error(VxError::TypeMismatch, "it is no " + std::string(kind));
}

std::optional<NodeId> IdOf(const Node* node)
{
    return node != nullptr ? std::optional(node->Id()) : std::nullopt;
}

const EnumEntryNode& EntryAt(const NodeMapImpl& map, NodeId entry)
{
    return static_cast<const EnumEntryNode&>(map.At(entry)); // Entries hands out no others
}

} // namespace

NodeMap::NodeMap(std::unique_ptr<NodeMapImpl> impl) : m_impl(std::move(impl)) {}

NodeMap::~NodeMap() = default;

VxExpected<std::unique_ptr<NodeMap>> NodeMap::Load(std::string_view file, IRegisterPort& port,
                                                   RegisterOrder order, const IVxClock* clock)
{
    auto description = Description::Parse(file);
    if (!description)
        return description.Error();
    return Create(*std::move(description), port, order, clock);
}

VxExpected<std::unique_ptr<NodeMap>> NodeMap::Create(std::shared_ptr<const Description> description,
                                                     IRegisterPort& port, RegisterOrder order,
                                                     const IVxClock* clock)
{
    if (description == nullptr)
        return VxResult(VxError::InvalidParameter, "there is no camera description");
    return std::unique_ptr<NodeMap>(
        new NodeMap(std::make_unique<NodeMapImpl>(std::move(description), port, order, clock)));
}

const std::vector<Feature>& NodeMap::Features() const
{
    return m_impl->m_features;
}

std::size_t NodeMap::NodeCount() const
{
    return m_impl->m_description->Nodes().size();
}

std::optional<NodeId> NodeMap::Find(std::string_view name) const
{
    const auto index = m_impl->m_description->Find(name);
    return index ? std::optional(static_cast<NodeId>(*index)) : std::nullopt;
}

const NodeInfo& NodeMap::Info(NodeId node) const
{
    return m_impl->At(node).Info();
}

const std::vector<Notice>& NodeMap::Notices() const
{
    return m_impl->m_notices;
}

void NodeMap::SetRegisterOrder(RegisterOrder order)
{
    const Guard guard(m_impl->m_mutex);
    m_impl->SetOrder(order);
    m_impl->InvalidateAll();
}

RegisterOrder NodeMap::Order() const
{
    const Guard guard(m_impl->m_mutex);
    return m_impl->m_order;
}

void NodeMap::SetCaching(bool isOn)
{
    const Guard guard(m_impl->m_mutex);
    m_impl->m_context.SetCaching(isOn);
    m_impl->InvalidateAll();
}

bool NodeMap::IsCaching() const
{
    const Guard guard(m_impl->m_mutex);
    return m_impl->m_context.IsCaching();
}

std::unique_lock<std::recursive_mutex> NodeMap::Hold() const
{
    return std::unique_lock(m_impl->m_mutex);
}

VxResult NodeMap::CloseReason() const
{
    const Guard guard(m_impl->m_mutex);
    return m_impl->m_context.Device().CloseReason();
}

AccessMode NodeMap::Access(NodeId node)
{
    const Guard guard(m_impl->m_mutex);
    return m_impl->Begin() ? m_impl->At(node).Access() : AccessMode::NotAvailable;
}

VxExpected<std::int64_t> NodeMap::GetInteger(NodeId id)
{
    return Read(*m_impl, id, [](Node& node) { return node.GetInteger(); });
}

VxResult NodeMap::SetInteger(NodeId id, std::int64_t value)
{
    return Write(*m_impl, id, [&](Node& node) { return node.SetInteger(value); });
}

VxExpected<IntegerLimits> NodeMap::GetIntegerLimits(NodeId id)
{
    return Ask(*m_impl, id, [](Node& node) { return node.GetIntegerLimits(); });
}

VxExpected<double> NodeMap::GetFloat(NodeId id)
{
    return Read(*m_impl, id, [](Node& node) { return node.GetFloat(); });
}

VxResult NodeMap::SetFloat(NodeId id, double value)
{
    return Write(*m_impl, id, [&](Node& node) { return node.SetFloat(value); });
}

VxExpected<FloatLimits> NodeMap::GetFloatLimits(NodeId id)
{
    return Ask(*m_impl, id, [](Node& node) { return node.GetFloatLimits(); });
}

VxExpected<bool> NodeMap::GetBoolean(NodeId id)
{
    return Read(*m_impl, id, [](Node& node) -> VxExpected<bool> {
        if (node.Info().type != ValueType::Boolean)
            return IsNo(node, "boolean");
        const auto value = node.GetInteger();
        return value ? VxExpected<bool>(*value != 0) : value.Error();
    });
}

VxResult NodeMap::SetBoolean(NodeId id, bool value)
{
    return Write(*m_impl, id, [&](Node& node) {
        return node.Info().type == ValueType::Boolean ? node.SetInteger(value ? 1 : 0)
                                                      : IsNo(node, "boolean");
    });
}

VxResult NodeMap::Execute(NodeId id)
{
    return Write(*m_impl, id, [](Node& node) {
        auto* const command = dynamic_cast<CommandNode*>(&node);
        return command != nullptr ? command->Execute() : IsNo(node, "command");
    });
}

VxExpected<bool> NodeMap::IsDone(NodeId id)
{
    return Ask(*m_impl, id, [](Node& node) -> VxExpected<bool> {
        auto* const command = dynamic_cast<CommandNode*>(&node);
        return command != nullptr ? command->IsDone() : IsNo(node, "command");
    });
}

std::span<const NodeId> NodeMap::Entries(NodeId enumeration) const
{
    return m_impl->m_entries[static_cast<std::size_t>(enumeration)];
}

std::string_view NodeMap::EntryName(NodeId entry) const
{
    return EntryAt(*m_impl, entry).Symbol();
}

std::int64_t NodeMap::EntryValue(NodeId entry) const
{
    return EntryAt(*m_impl, entry).Value();
}

VxExpected<NodeId> NodeMap::GetEntry(NodeId id)
{
    return Read(*m_impl, id, [](Node& node) -> VxExpected<NodeId> {
        auto* const enumeration = dynamic_cast<EnumerationNode*>(&node);
        if (enumeration == nullptr)
            return IsNo(node, "enumeration");
        const auto entry = enumeration->Current();
        return entry ? VxExpected<NodeId>((*entry)->Id()) : entry.Error();
    });
}

VxResult NodeMap::SetEntry(NodeId id, std::string_view name)
{
    return Write(*m_impl, id, [&](Node& node) {
        auto* const enumeration = dynamic_cast<EnumerationNode*>(&node);
        return enumeration != nullptr ? enumeration->Select(name) : IsNo(node, "enumeration");
    });
}

VxExpected<std::string> NodeMap::GetString(NodeId id)
{
    return Read(*m_impl, id, [](Node& node) { return node.GetString(); });
}

VxResult NodeMap::SetString(NodeId id, std::string_view value)
{
    return Write(*m_impl, id, [&](Node& node) { return node.SetString(value); });
}

VxExpected<std::vector<std::byte>> NodeMap::GetBytes(NodeId id)
{
    return Read(*m_impl, id, [](Node& node) { return node.GetBytes(); });
}

VxResult NodeMap::SetBytes(NodeId id, std::span<const std::byte> bytes)
{
    return Write(*m_impl, id, [&](Node& node) { return node.SetBytes(bytes); });
}

std::span<const NodeId> NodeMap::Selected(NodeId selector) const
{
    return m_impl->m_selected[static_cast<std::size_t>(selector)];
}

std::span<const NodeId> NodeMap::Selectors(NodeId selected) const
{
    return m_impl->m_selectors[static_cast<std::size_t>(selected)];
}

void NodeMap::InvalidateAll()
{
    const Guard guard(m_impl->m_mutex);
    m_impl->InvalidateAll();
}

std::optional<NodeId> NodeMap::Alias(NodeId node) const
{
    return IdOf(m_impl->At(node).Alias());
}

std::optional<NodeId> NodeMap::CastAlias(NodeId node) const
{
    return IdOf(m_impl->At(node).CastAlias());
}

std::uint32_t NodeMap::PollingMs(NodeId node) const
{
    return m_impl->At(node).PollingMs();
}

void NodeMap::AttachEvent(std::uint64_t id, std::span<const std::byte> bytes)
{
    const Guard guard(m_impl->m_mutex);
    m_impl->AttachEvent(id, bytes);
}

void NodeMap::AttachChunks(std::span<const Chunk> chunks)
{
    const Guard guard(m_impl->m_mutex);
    m_impl->AttachChunks(chunks);
}

} // namespace genapi
