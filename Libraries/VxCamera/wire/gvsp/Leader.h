#pragma once

#include "VxBase/VxByteReader.h"
#include "VxBase/VxByteWriter.h"
#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvsp/PayloadType.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvsp {

/// The fields with which every leader begins, except that of H.264; they tell which parser comes next.
struct LeaderStart {
    std::uint8_t fieldInfo = 0; ///< interlaced cameras: field id (0xF0) and field count (0x0F)
    std::uint8_t genericFlags = 0;
    PayloadType payloadType;
    std::uint64_t timestampTicks = 0; ///< 0 from a camera without a clock

    bool operator==(const LeaderStart&) const = default;
};

// Fixed by the protocol.
constexpr std::size_t kLeaderStartBytes = 12;

/// Does not allocate.
/// @param data  the leader packet's data; more than 12 bytes are allowed and left alone
/// @return  VxError::Truncated
[[nodiscard]] VxExpected<LeaderStart> ParseLeaderStart(std::span<const std::byte> data);

/// For the parsers of whole leaders.
[[nodiscard]] LeaderStart ReadLeaderStart(VxByteReader& in);
void WriteLeaderStart(VxByteWriter& out, const LeaderStart& start);

} // namespace gvsp
