#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/surface/PictureMemory.h"
#include "VxDSSource/camera/VxBuffer.h"

#include <cstdint>

/// The state behind a VxBuffer; the pipeline fills it, everybody else reads it through the buffer.
struct VxBufferImpl {
    VxPayloadType payloadType = VxPayloadType::None;
    VxResult operationResult; ///< NOT_INITIALIZED until the buffer was filled
    PictureMemory picture;
    std::uint64_t blockId = 0;
    std::uint64_t timestampTicks = 0;
};
