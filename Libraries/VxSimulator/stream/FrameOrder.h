#pragma once

#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include "VxSimulator/picture/PictureFormat.h"
#include "VxSimulator/picture/TestScene.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace simulator {

/// Which chunks come with a frame, and how. The picture is the first of them.
struct ChunkOrder {
    enum class Way {
        None,        ///< the payload is the picture
        BehindImage, ///< an image with chunks behind it, since version 2 of the protocol
        AsPayload,   ///< chunk data, whose leader tells nothing of a picture
    };
    Way way = Way::None;
    bool hasFrameId = false;
    bool hasTimestamp = false;
};

/// All that is needed to make and send one frame: the camera's settings at the moment it was due.
struct FrameOrder {
    std::uint64_t frameNumber = 0; ///< shown in the picture; counts from the camera's start
    std::uint64_t blockId = 1;     ///< begins again with each acquisition
    std::uint64_t timestampTicks = 0;
    PictureFormat format{};
    TestPattern pattern = TestPattern::ColorBars;
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;
    std::uint32_t offsetXPx = 0;
    std::uint32_t offsetYPx = 0;
    gvsp::IdMode idMode = gvsp::IdMode::Standard;
    std::size_t packetSizeBytes = 0; ///< with the headers of IP, UDP and GVSP
    std::chrono::nanoseconds packetDelay{0};
    transport::Ipv4Endpoint destination;
    ChunkOrder chunks{};
};

} // namespace simulator
