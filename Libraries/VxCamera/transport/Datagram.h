#pragma once

#include "VxCamera/transport/Ipv4Endpoint.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace transport {

/// Room for one datagram, and what was received into it.
///
/// With bodies the datagram is spread: headBytes go to memory and the next ones into a body, again and again;
/// what is left goes to memory. Whatever goes to memory lies there where it would lie without bodies.
///
/// A socket that coalesces may hand over several datagrams of one sender as one: all of segmentBytes, but for
/// the last one, which may be shorter.
struct Datagram {
    static constexpr std::size_t kMostBodies = 64; // chosen: as many as a system coalesces

    std::span<std::byte> memory; ///< in: borrowed; a longer datagram is cut and marked
    /// in: borrowed, kMostBodies at most, all but the last equally long; with their heads they are not longer
    /// than memory. Empty = everything goes to memory; a socket that cannot spread so much clears them
    std::span<const std::span<std::byte>> bodies{};
    std::size_t headBytes = 0;    ///< in: of each body
    std::size_t size = 0;         ///< out: bytes received
    std::size_t segmentBytes = 0; ///< out: of each of the datagrams that came as one; 0: it is one datagram
    Ipv4Endpoint sender{};        ///< out
    bool isTruncated = false;     ///< out: the datagram was longer than the room for it

    /// The datagram; one that is spread has to be joined before.
    [[nodiscard]] std::span<const std::byte> Bytes() const { return memory.first(size); }

    /// The first bytes: the head of one that is spread, else all of them.
    [[nodiscard]] std::span<const std::byte> Head() const;

    /// How many datagrams came as this one; at least 1.
    [[nodiscard]] std::size_t SegmentCount() const;
    /// Where one of them lies in memory, but for what went into bodies.
    [[nodiscard]] std::span<const std::byte> Segment(std::size_t index) const;

    /// Puts a datagram that is spread together in memory.
    void Join();
    /// The same with what went into one body.
    void Join(std::size_t body) const;

    /// Receives these bytes: for sockets that do not let the system do it.
    void Fill(std::span<const std::byte> bytes);

    /// Calls use(std::span<std::byte>) with each piece of the room, in the order in which they are filled.
    template <typename Use>
    void ForEachPiece(Use use) const
    {
        std::size_t place = 0; // in memory
        for (const std::span<std::byte> body : bodies) {
            use(memory.subspan(place, headBytes));
            use(body);
            place += headBytes + body.size();
        }
        use(memory.subspan(place));
    }
    [[nodiscard]] std::size_t PieceCount() const { return 2 * bodies.size() + 1; }

private:
    [[nodiscard]] std::size_t PlaceOf(std::size_t body) const
    {
        return body * (headBytes + bodies.front().size()) + headBytes; // all in front of it are equally long
    }
};

} // namespace transport
