#include "VxSimulator/device/DeviceMemory.h"

#include "VxBase/VxByteOrder.h"

#include "VxCamera/wire/gvcp/Command.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <tuple>

namespace simulator {

using gvcp::Status;

namespace {

bool IsAligned(std::uint32_t address, std::size_t size)
{
    return address % gvcp::kAlignment == 0 && size % gvcp::kAlignment == 0;
}

} // namespace

void DeviceMemory::Add(std::uint32_t address, std::size_t size, Access access)
{
    constexpr std::uint32_t kMask = gvcp::kAlignment - 1;
    const std::uint32_t begin = address & ~kMask;
    const std::size_t bytes = (address - begin + size + kMask) & ~std::size_t{kMask};
    assert(Find(begin) == m_blocks.end());
    m_blocks.emplace(begin, Block{std::vector<std::byte>(bytes), access});
}

DeviceMemory::Blocks::const_iterator DeviceMemory::Find(std::uint32_t address) const
{
    auto block = m_blocks.upper_bound(address);
    if (block == m_blocks.begin())
        return m_blocks.end();
    --block;
    return address - block->first < block->second.bytes.size() ? block : m_blocks.end();
}

template <typename Visit>
Status DeviceMemory::ForEachPiece(std::uint32_t address, std::size_t size, Visit visit) const
{
    for (std::size_t done = 0; done < size;) {
        const std::uint64_t at = std::uint64_t{address} + done;
        const auto block = at <= UINT32_MAX ? Find(static_cast<std::uint32_t>(at)) : m_blocks.end(); // tested
        if (block == m_blocks.end())
            return Status::InvalidAddress;
        const std::size_t offset = static_cast<std::size_t>(at) - block->first;
        const std::size_t piece = std::min(size - done, block->second.bytes.size() - offset);
        if (const Status status = visit(block->second, offset, done, piece); status != Status::Success)
            return status;
        done += piece;
    }
    return Status::Success;
}

Status DeviceMemory::Read(std::uint32_t address, std::span<std::byte> out) const
{
    if (!IsAligned(address, out.size()))
        return Status::BadAlignment;
    return ForEachPiece(address, out.size(), [&](const Block& block, auto offset, auto done, auto size) {
        if (block.access == Access::WriteOnly)
            return Status::AccessDenied;
        std::ranges::copy(std::span(block.bytes).subspan(offset, size),
                          out.begin() + static_cast<std::ptrdiff_t>(done)); // sizes of blocks are small
        return Status::Success;
    });
}

Status DeviceMemory::CheckWrite(std::uint32_t address, std::size_t size) const
{
    if (!IsAligned(address, size))
        return Status::BadAlignment;
    return ForEachPiece(address, size, [](const Block& block, auto, auto, auto) {
        return block.access == Access::ReadOnly ? Status::WriteProtect : Status::Success;
    });
}

void DeviceMemory::Store(std::uint32_t address, std::span<const std::byte> bytes)
{
    const Status status =
        ForEachPiece(address, bytes.size(), [&](const Block& block, auto offset, auto done, auto size) {
            // ForEachPiece is shared with reading, so it hands out what it may not change; the blocks are
            // ours.
            auto& memory = const_cast<Block&>(block).bytes;
            std::ranges::copy(bytes.subspan(done, size),
                              memory.begin() + static_cast<std::ptrdiff_t>(offset));
            return Status::Success;
        });
    assert(status == Status::Success);
    std::ignore = status; // in a build without assertions
}

void DeviceMemory::Store32(std::uint32_t address, std::uint32_t value)
{
    std::array<std::byte, sizeof value> bytes{};
    VxStoreBe<std::uint32_t>(bytes, value);
    Store(address, bytes);
}

void DeviceMemory::StoreDouble(std::uint32_t address, double value)
{
    std::array<std::byte, sizeof value> bytes{};
    VxStoreBe<std::uint64_t>(bytes, std::bit_cast<std::uint64_t>(value));
    Store(address, bytes);
}

void DeviceMemory::StoreFloat(std::uint32_t address, float value)
{
    Store32(address, std::bit_cast<std::uint32_t>(value));
}

void DeviceMemory::StoreText(std::uint32_t address, std::size_t size, std::string_view text)
{
    std::vector<std::byte> bytes(size);
    const auto used = std::as_bytes(std::span(text)).first(std::min(size, text.size()));
    std::ranges::copy(used, bytes.begin());
    Store(address, bytes);
}

void DeviceMemory::Load(std::uint32_t address, std::span<std::byte> out) const
{
    const Status status =
        ForEachPiece(address, out.size(), [&](const Block& block, auto offset, auto done, auto size) {
            std::ranges::copy(std::span(block.bytes).subspan(offset, size),
                              out.begin() + static_cast<std::ptrdiff_t>(done)); // sizes of blocks are small
            return Status::Success;
        });
    assert(status == Status::Success);
    std::ignore = status; // in a build without assertions
}

std::uint32_t DeviceMemory::Load32(std::uint32_t address) const
{
    std::array<std::byte, sizeof(std::uint32_t)> bytes{};
    Load(address, bytes);
    return VxLoadBe<std::uint32_t>(bytes);
}

double DeviceMemory::LoadDouble(std::uint32_t address) const
{
    std::array<std::byte, sizeof(double)> bytes{};
    Load(address, bytes);
    return std::bit_cast<double>(VxLoadBe<std::uint64_t>(bytes));
}

} // namespace simulator
