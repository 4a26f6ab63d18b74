#pragma once

#include "VxBase/VxResult.h"

#include <cstdint>
#include <memory>

class VxBufferImpl;
class VxImage;

/// What a block carries.
enum class VxPayloadType : std::uint32_t {
    None = 0,
    Image = 1, ///< fixed: the number that callers pass
    Other = 2,
};

/// A buffer for one block, with the picture in it.
///
/// Owner:  the VxPipeline for received ones (borrowed between RetrieveNextBuffer and ReleaseBuffer), else
///         whoever made it.
/// Thread: one at a time.
class VxBuffer {
public:
    /// An empty buffer.
    explicit VxBuffer(VxPayloadType payloadType);
    ~VxBuffer();
    VxBuffer(const VxBuffer&) = delete;
    VxBuffer& operator=(const VxBuffer&) = delete;

    /// @return  OK when the block arrived complete; MISSING_PACKETS, BUFFER_TOO_SMALL, NOT_AN_IMAGE, ...;
    ///          NOT_INITIALIZED for a buffer that was never filled
    [[nodiscard]] VxResult GetOperationResult() const;

    /// The picture; borrowed, null when the payload is none.
    [[nodiscard]] VxImage* GetImage();
    [[nodiscard]] const VxImage* GetImage() const;

    [[nodiscard]] VxPayloadType GetPayloadType() const;

    /// Id of the block in its stream; 0 for a buffer that was never filled.
    [[nodiscard]] std::uint64_t GetBlockID() const;

    /// Time of exposure by the camera's counter, in its ticks.
    [[nodiscard]] std::uint64_t GetTimestamp() const;

    /// For the camera library itself: the state behind the buffer.
    [[nodiscard]] VxBufferImpl& Impl() const { return *m_impl; }

private:
    std::unique_ptr<VxBufferImpl> m_impl;
};
