#include "VxCamera/control/MemoryBlock.h"

#include "VxCamera/wire/gvcp/Command.h"

#include <algorithm>

namespace control {

namespace {

// Chosen: the protocol allows 536, but every camera is known to carry this many.
constexpr std::size_t kBlockBytes = 512;

} // namespace

MemoryBlock FirstBlock(std::uint32_t address, std::size_t bytes)
{
    MemoryBlock block;
    block.skipBytes = address % gvcp::kAlignment;
    block.address = address - static_cast<std::uint32_t>(block.skipBytes); // 0 to 3, not above the address
    block.wantedBytes = std::min(bytes, kBlockBytes - block.skipBytes);
    const std::size_t used = block.skipBytes + block.wantedBytes;
    block.bytes = (used + gvcp::kAlignment - 1) / gvcp::kAlignment * gvcp::kAlignment;
    return block;
}

} // namespace control
