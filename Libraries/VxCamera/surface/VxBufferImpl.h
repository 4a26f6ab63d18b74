#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/surface/PictureMemory.h"
#include "VxCamera/wire/gvsp/PayloadType.h"
#include "VxDSSource/camera/VxBuffer.h"

#include <cstddef>
#include <cstdint>

/// The state behind a VxBuffer; the pipeline fills it, everybody else reads it through the buffer.
struct VxBufferImpl {
    VxPayloadType payloadType = VxPayloadType::None;
    VxError operationCode = VxError::NotInitialized; ///< so until the buffer was filled
    std::uint64_t packetsMissing = 0;                ///< of a block with MissingPackets
    std::size_t neededBytes = 0;                     ///< of a block with BufferTooSmall
    gvsp::PayloadType carried;                       ///< what its leader says
    PictureMemory picture;
    std::uint64_t blockId = 0;
    std::uint64_t timestampTicks = 0;

    /// The code with its words. They are made when somebody asks: the receiver's thread takes no memory.
    [[nodiscard]] VxResult OperationResult() const;
};
