#pragma once

#include "vxgrab/FrameFormat.h"

#include "VxBase/VxMutex.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace vxgrab {

/// One frame, copied, on its way to a file.
struct QueuedPicture {
    std::uint64_t number = 0; ///< the picture's place among all pictures, from 1
    FrameFormat format;
    std::vector<std::byte> bytes;
};

/// Carries pictures from the streaming thread, which must not wait for a disk, to the thread that writes
/// files.
///
/// Owner:  FrameRecorder, by value.
/// Thread: any; locked inside.
class PictureQueue final {
public:
    /// Copies a picture, unless the queue is full.
    /// @return  whether it was taken
    bool Offer(std::uint64_t number, const FrameFormat& format, std::span<const std::byte> bytes);

    /// @return  the oldest picture; nothing when the queue is empty
    [[nodiscard]] std::optional<QueuedPicture> Take();

private:
    VxMutex m_mutex;
    std::deque<QueuedPicture> m_pictures VX_GUARDED_BY(m_mutex);
};

} // namespace vxgrab
