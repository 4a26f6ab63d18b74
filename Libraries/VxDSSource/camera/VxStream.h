#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"

#include <cstdint>
#include <memory>

class VxGenParameterArray;
class VxStreamImpl;

/// Kind of stream; numbered like VxDeviceInfoType.
enum class VxStreamType : std::uint32_t {
    Gev = 0,
    U3v = 3,
};

/// A receiver of image blocks.
///
/// Owner:  whoever made it; outlives the VxPipeline on it.
/// Thread: Open and Close from one thread at a time; GetParameters from any.
class VxStream {
public:
    VxStream(const VxStream&) = delete;
    VxStream& operator=(const VxStream&) = delete;
    virtual ~VxStream();

    /// Opens the receiver for a camera with default settings.
    /// @return  ALREADY_OPEN, NOT_FOUND, ...; nothing stays open on failure
    virtual VxResult Open(const VxString& connectionId) = 0;

    [[nodiscard]] virtual bool IsOpen() const;

    /// Ends reception; OK also when nothing was open. A pipeline on this stream should be stopped before: one
    /// that was not is started no longer, and begins anew with VxPipeline::Start.
    virtual VxResult Close();

    /// The receiver's own features: statistics ("AcquisitionRate" in frames a second, "Bandwidth" in bits a
    /// second, "BlocksDropped", "PipelineBlocksDropped", "ErrorCount", "LastError") and the command "Reset".
    /// Borrowed; never null.
    [[nodiscard]] virtual VxGenParameterArray* GetParameters();

    [[nodiscard]] virtual VxStreamType GetType() const = 0;

protected:
    explicit VxStream(std::unique_ptr<VxStreamImpl> impl);
    [[nodiscard]] VxStreamImpl& Impl() const { return *m_impl; }

private:
    friend class VxPipeline;
    std::unique_ptr<VxStreamImpl> m_impl;
};
