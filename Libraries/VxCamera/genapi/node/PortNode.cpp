#include "VxCamera/genapi/node/PortNode.h"

#include <algorithm>

#include "VxCamera/genapi/node/NodeWords.h"
#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {

namespace {

// Chosen: a round trip to a camera costs as much as some thousand steps of evaluation.
constexpr std::size_t kPortSteps = 1000;

constexpr WideAddress kAddressLimit = WideAddress{1} << 64;

bool IsInDevice(WideAddress address, std::size_t length)
{
    return address >= 0 && address + static_cast<WideAddress>(length) <= kAddressLimit;
}

VxResult OutsideDevice()
{
    return VxResult(VxError::InvalidData, "the address lies outside of the camera's 64-bit register space");
}

} // namespace

VxResult PortNode::ReadDevice(NodeContext& context, WideAddress address, std::span<std::byte> bytes)
{
    context.Spend(kPortSteps);
    if (!IsInDevice(address, bytes.size()))
        return OutsideDevice();
    if (const VxResult late = context.CheckDeadline(); !late.IsOK())
        return late;
    return context.Device().Read(static_cast<std::uint64_t>(address), bytes);
}

VxResult PortNode::WriteDevice(NodeContext& context, WideAddress address, std::span<const std::byte> bytes)
{
    context.Spend(kPortSteps);
    if (!IsInDevice(address, bytes.size()))
        return OutsideDevice();
    if (const VxResult late = context.CheckDeadline(); !late.IsOK())
        return late;
    return context.Device().Write(static_cast<std::uint64_t>(address), bytes);
}

VxResult PortNode::Read(WideAddress address, std::span<std::byte> bytes)
{
    if (!Fault().empty())
        return VxResult(VxError::NotSupported, Fault());
    if (IsDevice())
        return ReadDevice(Context(), address, bytes);
    if (!m_data)
        return VxResult(VxError::NotAvailable, "the data behind this port come with " +
                                                   std::string(Awaited()) + ", and none are attached");
    const auto size = static_cast<WideAddress>(m_data->size());
    const WideAddress first =
        address < 0 ? size + address : address; // a negative one counts from the chunk's end
    if (first < 0 || first + static_cast<WideAddress>(bytes.size()) > size)
        return VxResult(VxError::Truncated,
                        "the data behind this port have only " + std::to_string(m_data->size()) + " bytes");
    std::copy_n(m_data->begin() + static_cast<std::ptrdiff_t>(first), bytes.size(), bytes.begin());
    return VxResult::Ok();
}

VxResult PortNode::Write(WideAddress address, std::span<const std::byte> bytes)
{
    if (!Fault().empty())
        return VxResult(VxError::NotSupported, Fault());
    if (IsDevice())
        return WriteDevice(Context(), address, bytes);
    return VxResult(VxError::NotWritable, "data that came with an image or an event cannot be written");
}

std::optional<std::uint64_t> PortNode::ChunkId()
{
    if (m_chunkIdNode == nullptr)
        return m_chunkId;
    if (m_chunkIdNode->Info().type == ValueType::String) {
        const auto text = m_chunkIdNode->GetString();
        return text ? ParseHexadecimal(*text) : std::nullopt;
    }
    const auto value = m_chunkIdNode->GetInteger();
    return value ? std::optional(static_cast<std::uint64_t>(*value)) : std::nullopt;
}

std::string_view PortNode::Awaited() const
{
    return EventId() ? "an event" : "an image";
}

void PortNode::Attach(std::span<const std::byte> bytes)
{
    m_data.emplace(bytes.begin(), bytes.end());
}

void PortNode::Detach()
{
    m_data.reset();
}

void PortNode::Apply(const NodeProperty& property)
{
    switch (property.element) {
    case Element::ChunkId:
        m_chunkId = ParseHexadecimal(property.text);
        if (!m_chunkId)
            SetFault("its ChunkID \"" + std::string(property.text) + "\" is no hexadecimal number");
        return;
    case Element::PChunkId:
        m_chunkIdNode = property.target;
        return;
    case Element::SwapEndianess:
        m_swapsBytes = ParseYesNo(property.text).value_or(false);
        return;
    default:
        return;
    }
}

AccessMode PortNode::OwnAccess()
{
    if (IsDevice())
        return AccessMode::ReadWrite;
    if (m_data)
        return AccessMode::ReadOnly;
    Context().SetAwaited(Awaited());
    return AccessMode::NotAvailable;
}

} // namespace genapi
