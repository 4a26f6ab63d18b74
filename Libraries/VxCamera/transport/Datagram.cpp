#include "VxCamera/transport/Datagram.h"

#include <cstring>

namespace transport {

std::span<const std::byte> Datagram::Head() const
{
    return memory.first(bodies.empty() ? size : std::min(size, headBytes));
}

std::size_t Datagram::SegmentCount() const
{
    return segmentBytes == 0 || size == 0 ? 1 : (size - 1) / segmentBytes + 1;
}

std::span<const std::byte> Datagram::Segment(std::size_t index) const
{
    if (segmentBytes == 0)
        return Bytes();
    const std::size_t place = index * segmentBytes;
    return Bytes().subspan(place, std::min(segmentBytes, size - place));
}

void Datagram::Join()
{
    for (std::size_t body = 0; body < bodies.size(); ++body)
        Join(body);
    bodies = {};
}

void Datagram::Join(std::size_t body) const
{
    const std::size_t place = PlaceOf(body);
    if (size > place)
        std::memcpy(memory.data() + place, bodies[body].data(), std::min(size - place, bodies[body].size()));
}

void Datagram::Fill(std::span<const std::byte> bytes)
{
    auto rest = bytes;
    ForEachPiece([&rest](std::span<std::byte> piece) {
        const std::size_t now = std::min(rest.size(), piece.size());
        if (now > 0)
            std::memcpy(piece.data(), rest.data(), now);
        rest = rest.subspan(now);
    });
    size = bytes.size() - rest.size();
    segmentBytes = 0;
    isTruncated = !rest.empty();
}

} // namespace transport
