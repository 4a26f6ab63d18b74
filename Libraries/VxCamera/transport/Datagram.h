#pragma once

#include "VxCamera/transport/Ipv4Endpoint.h"

#include <cstddef>
#include <span>

namespace transport {

/// Room for one datagram, and what was received into it.
///
/// With a body the datagram is spread: its first headBytes go to the start of memory, the next ones into the
/// body, and what is left behind the head in memory.
struct Datagram {
    std::span<std::byte> memory; ///< in: borrowed; a longer datagram is cut and marked
    std::span<std::byte> body{}; ///< in: borrowed; empty = everything goes to memory
    std::size_t headBytes = 0;   ///< in: at most as many as memory has
    std::size_t size = 0;        ///< out: bytes received
    Ipv4Endpoint sender{};       ///< out
    bool isTruncated = false;    ///< out: the datagram was longer than the room for it

    /// The datagram; one that is spread has to be joined before.
    [[nodiscard]] std::span<const std::byte> Bytes() const { return memory.first(size); }

    /// The first bytes: the head of one that is spread, else all of them.
    [[nodiscard]] std::span<const std::byte> Head() const;

    /// Puts a datagram that is spread together in memory; what does not fit there is cut.
    void Join();

    /// Receives these bytes: for sockets that do not let the system do it.
    void Fill(std::span<const std::byte> bytes);
};

} // namespace transport
