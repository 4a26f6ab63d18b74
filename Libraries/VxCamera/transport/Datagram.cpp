#include "VxCamera/transport/Datagram.h"

#include <algorithm>
#include <cstring>

namespace transport {

std::span<const std::byte> Datagram::Head() const
{
    return memory.first(body.empty() ? size : std::min(size, headBytes));
}

void Datagram::Join()
{
    if (body.empty())
        return;
    if (size > memory.size()) {
        size = memory.size();
        isTruncated = true;
    }
    const std::size_t behindHead = size > headBytes ? size - headBytes : 0;
    const std::size_t inBody = std::min(behindHead, body.size());
    std::byte* const place = memory.data() + headBytes;
    std::memmove(place + inBody, place, behindHead - inBody);
    std::memcpy(place, body.data(), inBody);
    body = {};
}

void Datagram::Fill(std::span<const std::byte> bytes)
{
    const auto head =
        bytes.first(body.empty() ? std::min(bytes.size(), memory.size()) : std::min(bytes.size(), headBytes));
    std::ranges::copy(head, memory.begin());
    auto rest = bytes.subspan(head.size());
    size = head.size();
    isTruncated = body.empty() && !rest.empty();
    if (body.empty())
        return;
    const auto inBody = rest.first(std::min(rest.size(), body.size()));
    std::ranges::copy(inBody, body.begin());
    rest = rest.subspan(inBody.size());
    const auto behind = rest.first(std::min(rest.size(), memory.size() - headBytes));
    std::ranges::copy(behind, memory.subspan(headBytes).begin());
    size += inBody.size() + behind.size();
    isTruncated = behind.size() < rest.size();
}

} // namespace transport
