#pragma once

#include "VxCamera/wire/gvcp/Status.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string_view>
#include <vector>

namespace simulator {

/// The address space of the camera: blocks of bytes with gaps between them.
///
/// Owner:  CameraModel, by value.
/// Thread: one at a time.
class DeviceMemory {
public:
    enum class Access { ReadOnly, WriteOnly, ReadWrite };

    /// Adds a block of zeros. Blocks do not overlap; an address and a size that are no multiples of 4 are
    /// rounded outwards.
    void Add(std::uint32_t address, std::size_t size, Access access);

    // What applications do: address and size must be multiples of 4, and every byte must lie in a block. A
    // block may be left in the middle, and a range may run over neighbouring blocks.

    /// @return  BadAlignment, InvalidAddress, AccessDenied for what can only be written
    [[nodiscard]] gvcp::Status Read(std::uint32_t address, std::span<std::byte> out) const;

    /// @return  whether an application might write there: BadAlignment, InvalidAddress, WriteProtect
    [[nodiscard]] gvcp::Status CheckWrite(std::uint32_t address, std::size_t size) const;

    // What the device itself does: whatever the access is. The place must exist.

    void Store(std::uint32_t address, std::span<const std::byte> bytes);
    void Store32(std::uint32_t address, std::uint32_t value);
    void StoreDouble(std::uint32_t address, double value);
    void StoreFloat(std::uint32_t address, float value);
    void StoreText(std::uint32_t address, std::size_t size, std::string_view text);
    void Load(std::uint32_t address, std::span<std::byte> out) const;
    [[nodiscard]] std::uint32_t Load32(std::uint32_t address) const;
    [[nodiscard]] double LoadDouble(std::uint32_t address) const;

private:
    struct Block {
        std::vector<std::byte> bytes;
        Access access;
    };
    using Blocks = std::map<std::uint32_t, Block>; // by first address

    /// @return  the block with this address, or end
    [[nodiscard]] Blocks::const_iterator Find(std::uint32_t address) const;

    /// Calls visit(block, offset in block, offset in range, size) for each piece of a range.
    /// @return  InvalidAddress at the first gap; Success
    template <typename Visit>
    [[nodiscard]] gvcp::Status ForEachPiece(std::uint32_t address, std::size_t size, Visit visit) const;

    Blocks m_blocks;
};

} // namespace simulator
