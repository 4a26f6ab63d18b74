#include "vxgrab/PictureQueue.h"

#include <utility>

namespace vxgrab {
namespace {

// Chosen: with frames of 6 MB (1920 x 1080 RGB24) about 50 MB; rides out a disk that stalls for a moment.
constexpr std::size_t kCapacity = 8;

} // namespace

bool PictureQueue::Offer(std::uint64_t number, const FrameFormat& format, std::span<const std::byte> bytes)
{
    const VxLock lock(m_mutex);
    if (m_pictures.size() >= kCapacity)
        return false;
    m_pictures.push_back({number, format, {bytes.begin(), bytes.end()}});
    return true;
}

std::optional<QueuedPicture> PictureQueue::Take()
{
    const VxLock lock(m_mutex);
    if (m_pictures.empty())
        return std::nullopt;
    QueuedPicture picture = std::move(m_pictures.front());
    m_pictures.pop_front();
    return picture;
}

} // namespace vxgrab
