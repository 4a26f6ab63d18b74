#pragma once

#include "VxBase/VxResult.h"

#include <cstddef>
#include <cstdint>
#include <memory>

class VxBuffer;
class VxPipelineImpl;
class VxStream;

/// Owns the buffers that a stream fills and hands them out in order.
///
/// Owner:  whoever made it; deleted before its stream.
/// Thread: Start, Stop and the setters from one thread at a time; RetrieveNextBuffer and ReleaseBuffer from
///         one consumer thread, also while another stops the pipeline.
class VxPipeline {
public:
    /// @param stream  borrowed: outlives the pipeline; must not be null
    explicit VxPipeline(VxStream* stream);
    ~VxPipeline();
    VxPipeline(const VxPipeline&) = delete;
    VxPipeline& operator=(const VxPipeline&) = delete;

    /// @param bytes  size of each buffer, used at the next Start
    void SetBufferSize(std::uint32_t bytes);

    /// @param count  number of buffers, used at the next Start; 0 counts as 1
    /// @return  INVALID_PARAMETER when that much cannot be allocated
    VxResult SetBufferCount(std::uint32_t count);

    /// @param handle  true: a buffer that is too small for an image is enlarged for the next one, so that at
    ///                most one image is lost
    void SetHandleBufferTooSmall(bool handle);

    /// Allocates the buffers and starts reception. OK when already started, and nothing changes.
    /// @return  NOT_OPEN, BUSY when another pipeline receives the stream, OUT_OF_MEMORY
    VxResult Start();

    /// Ends reception and wakes a waiting RetrieveNextBuffer (ABORTED). Buffers handed out stay valid until
    /// released.
    VxResult Stop();

    /// @return  false also when the stream was closed meanwhile, opened again or not
    [[nodiscard]] bool IsStarted() const;

    /// Waits for the next filled buffer, complete or not.
    ///
    /// @param[out] buffer  borrowed until ReleaseBuffer; null on failure
    /// @param timeoutMs    longest wait
    /// @param[out] operationResult  the buffer's own result, where asked for
    /// @return  TIMEOUT, NOT_STARTED, ABORTED
    VxResult RetrieveNextBuffer(VxBuffer** buffer, std::uint32_t timeoutMs,
                                VxResult* operationResult = nullptr);

    /// Gives a buffer back for filling.
    /// @return  INVALID_PARAMETER for a buffer that was not handed out by this pipeline
    VxResult ReleaseBuffer(VxBuffer* buffer);

    /// @return  number of filled buffers that wait to be retrieved
    [[nodiscard]] std::size_t GetOutputQueueSize() const;

private:
    std::unique_ptr<VxPipelineImpl> m_impl;
};
