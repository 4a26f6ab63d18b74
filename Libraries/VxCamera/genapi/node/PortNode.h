#pragma once

#include "VxCamera/genapi/node/Node.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace genapi {

/// An address as the sum of what the description names: wide enough for any sum of 64-bit terms, and negative
/// ones.
__extension__ using WideAddress = __int128;

/// Way to a register space: the camera's own, or the data of one chunk of the last image or of the last
/// event.
///
/// Owner and thread: see Node.
class PortNode final : public Node {
public:
    using Node::Node;

    [[nodiscard]] VxResult Read(WideAddress address, std::span<std::byte> bytes);
    [[nodiscard]] VxResult Write(WideAddress address, std::span<const std::byte> bytes);

    /// @return  whether registers behind it are stored the other way round than their description says
    [[nodiscard]] bool SwapsBytes() const { return m_swapsBytes; }

    /// @return  whether it leads to the camera's own registers
    [[nodiscard]] bool IsDevice() const { return !m_chunkId && m_chunkIdNode == nullptr && !EventId(); }

    /// @return  whether it does nothing but lead to the camera's own registers, always
    [[nodiscard]] bool IsPlainDevice() const { return IsDevice() && !m_swapsBytes && HasNoConditions(); }

    /// @return  the chunk behind it; nothing for other ports and while the id cannot be read
    [[nodiscard]] std::optional<std::uint64_t> ChunkId();

    /// Puts data that came from the camera behind a port for chunks or events. Copies them.
    void Attach(std::span<const std::byte> bytes);
    void Detach();

    /// The camera's own registers, without a port.
    [[nodiscard]] static VxResult ReadDevice(NodeContext& context, WideAddress address,
                                             std::span<std::byte> bytes);
    [[nodiscard]] static VxResult WriteDevice(NodeContext& context, WideAddress address,
                                              std::span<const std::byte> bytes);

protected:
    void Apply(const NodeProperty& property) override;
    [[nodiscard]] AccessMode OwnAccess() override;

private:
    [[nodiscard]] std::string_view Awaited() const;

    std::optional<std::uint64_t> m_chunkId;
    Node* m_chunkIdNode = nullptr; // borrowed from the map
    bool m_swapsBytes = false;
    std::optional<std::vector<std::byte>> m_data; // of the chunk or the event
};

} // namespace genapi
