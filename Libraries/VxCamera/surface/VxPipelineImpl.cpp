#include "VxCamera/surface/VxPipelineImpl.h"

#include <algorithm>
#include <new>
#include <string>
#include <tuple>
#include <utility>

#include "VxCamera/surface/VxBufferImpl.h"
#include "VxCamera/surface/VxStreamImpl.h"

namespace {

constexpr std::size_t kDefaultBuffers = 16; // chosen: half a second at 30 frames a second

// Chosen: more than any picture needs, and few enough that the bookkeeping alone takes no memory worth
// mentioning.
constexpr std::size_t kMostBuffers = 4096;

// Chosen: 16 times a picture of 8192 x 8192 pixels; a leader that announces more is not believed.
constexpr std::size_t kLargestGrownBytes = std::size_t{1} << 30;

// Chosen: all buffers together, beyond what Start gave them: leaders that lie must not take all memory of the
// machine.
constexpr std::size_t kMostGrownBytes = std::size_t{2} << 30;

} // namespace

VxResult VxPipelineImpl::Slot::Reserve(std::size_t bytes)
{
    PictureMemory& picture = buffer.Impl().picture;
    VxResult reserved = picture.Reserve(bytes);
    memory = std::as_writable_bytes(picture.Memory());
    return reserved;
}

void VxPipelineImpl::Slot::Release()
{
    buffer.Impl().picture.Release();
    memory = {};
}

/// The consumer may have given the picture other memory (VxImage::Alloc, Attach): the next block goes into
/// the buffer's own.
void VxPipelineImpl::Slot::TakeBack()
{
    PictureMemory& picture = buffer.Impl().picture;
    picture.Detach();
    memory = std::as_writable_bytes(picture.Memory());
}

void VxPipelineImpl::Slot::Describe()
{
    VxBufferImpl& state = buffer.Impl();
    state.blockId = info.blockId;
    state.timestampTicks = info.timestampTicks;
    state.operationCode = info.code;
    state.packetsMissing = info.packetsMissing;
    state.neededBytes = info.geometry.memoryBytes;
    state.carried = info.geometry.payloadType;
    state.payloadType = info.code == VxError::NotAnImage ? VxPayloadType::Other : VxPayloadType::Image;
    const receive::BlockGeometry& geometry = info.geometry;
    const bool hasPicture =
        info.code == VxError::Ok || info.code == VxError::MissingPackets || info.code == VxError::CameraError;
    if (!hasPicture || geometry.code != VxError::Ok) {
        state.picture.Clear();
        return;
    }
    const VxResult described = state.picture.Describe(
        {geometry.widthPx, geometry.heightPx, geometry.pixelFormat, geometry.linePaddingBytes,
         geometry.offsetXPx, geometry.offsetYPx, geometry.areLinesJoined});
    if (!described.IsOK())
        state.operationCode = described.Code();
}

VxPipelineImpl::VxPipelineImpl(VxStreamImpl& stream) : m_stream(stream), m_bufferCount(kDefaultBuffers) {}

VxPipelineImpl::~VxPipelineImpl()
{
    Stop();
}

void VxPipelineImpl::SetBufferSize(std::size_t bytes)
{
    const VxLock lock(m_mutex);
    m_bufferBytes = bytes;
}

VxResult VxPipelineImpl::SetBufferCount(std::size_t count)
{
    if (count > kMostBuffers)
        return VxResult(VxError::InvalidParameter, std::to_string(count) + " buffers: at most " +
                                                       std::to_string(kMostBuffers) + " are possible");
    const VxLock lock(m_mutex);
    m_bufferCount = std::max<std::size_t>(count, 1);
    return VxResult::Ok();
}

void VxPipelineImpl::SetGrowing(bool isGrowing)
{
    const VxLock lock(m_mutex);
    m_isGrowing = isGrowing;
}

VxResult VxPipelineImpl::Allocate(std::size_t count, std::size_t bytes)
{
    const VxLock lock(m_mutex);
    // A buffer that is still handed out stays until it is released; Release then finds it here.
    std::erase_if(m_slots, [](const auto& slot) { return slot->place != Place::HandedOut; });
    m_free.clear();
    m_ready.clear();
    const std::size_t kept = m_slots.size();
    m_slots.reserve(kept + count);
    m_free.reserve(kept + count);
    m_ready.reserve(kept + count);
    for (std::size_t i = 0; i < count; ++i) {
        auto slot = std::make_unique<Slot>();
        slot->startBytes = bytes;
        if (VxResult reserved = slot->Reserve(bytes); !reserved.IsOK())
            return reserved;
        m_free.push_back(slot.get());
        m_slots.push_back(std::move(slot));
    }
    return VxResult::Ok();
}

VxResult VxPipelineImpl::Start()
{
    if (IsStarted())
        return VxResult::Ok();
    if (VxResult stopped = Stop(); !stopped.IsOK()) // what is left when the stream was closed under it
        return stopped;
    std::size_t count = 0;
    std::size_t bytes = 0;
    {
        const VxLock lock(m_mutex);
        count = m_bufferCount;
        bytes = m_bufferBytes;
    }
    if (VxResult allocated = Allocate(count, bytes); !allocated.IsOK())
        return allocated;
    {
        const VxLock lock(m_mutex);
        m_isStarted = true;
    }
    VxResult started = m_stream.StartReceiver(*this);
    if (!started.IsOK()) {
        const VxLock lock(m_mutex);
        m_isStarted = false;
    }
    return started;
}

VxResult VxPipelineImpl::Stop()
{
    {
        const VxLock lock(m_mutex);
        if (!m_isStarted)
            return VxResult::Ok();
        m_isStarted = false;
    }
    m_readyChanged.notify_all();
    m_stream.StopReceiver(*this); // waits for the receiver's thread, which needs the mutex
    const VxLock lock(m_mutex);
    for (Slot* const slot : m_ready) {
        slot->place = Place::Free;
        m_free.push_back(slot);
    }
    m_ready.clear();
    return VxResult::Ok();
}

bool VxPipelineImpl::IsStarted() const
{
    {
        const VxLock lock(m_mutex);
        if (!m_isStarted)
            return false;
    }
    return m_stream.IsReceivingFor(*this); // without the lock: the stream's comes first
}

VxResult VxPipelineImpl::Retrieve(VxBuffer** buffer, std::chrono::milliseconds timeout)
{
    *buffer = nullptr;
    // Texts need memory, and the receiver waits for the lock: they are made behind it.
    switch (TakeReady(buffer, timeout)) {
    case VxError::NotStarted:
        return VxResult(VxError::NotStarted, "the pipeline is not started");
    case VxError::Aborted:
        return VxResult(VxError::Aborted, "the pipeline was stopped");
    case VxError::Timeout:
        return VxResult(VxError::Timeout,
                        "no block arrived within " + std::to_string(timeout.count()) + " ms");
    default:
        return VxResult::Ok();
    }
}

VxError VxPipelineImpl::TakeReady(VxBuffer** buffer, std::chrono::milliseconds timeout)
{
    std::unique_lock lock(m_mutex);
    if (!m_isStarted)
        return VxError::NotStarted;
    m_readyChanged.wait_for(lock, timeout, [this] { return !m_ready.empty() || !m_isStarted; });
    if (!m_isStarted)
        return VxError::Aborted;
    if (m_ready.empty())
        return VxError::Timeout;
    Slot* const slot = m_ready.front();
    m_ready.erase(m_ready.begin());
    slot->place = Place::HandedOut;
    *buffer = &slot->buffer;
    return VxError::Ok;
}

VxResult VxPipelineImpl::Release(const VxBuffer* buffer)
{
    if (!TakeBack(buffer))
        return VxResult(VxError::InvalidParameter, "the buffer was not handed out by this pipeline");
    return VxResult::Ok();
}

/// @return  false: it was not handed out
bool VxPipelineImpl::TakeBack(const VxBuffer* buffer)
{
    const VxLock lock(m_mutex);
    const auto found = std::ranges::find_if(m_slots, [&](const auto& slot) {
        return &slot->buffer == buffer && slot->place == Place::HandedOut;
    });
    if (found == m_slots.end())
        return false;
    (*found)->TakeBack();
    (*found)->place = Place::Free;
    m_free.push_back(found->get());
    return true;
}

std::size_t VxPipelineImpl::ReadyCount() const
{
    const VxLock lock(m_mutex);
    return m_ready.size();
}

VxPipelineImpl::Slot* VxPipelineImpl::PopFree(std::size_t wantedBytes)
{
    if (m_free.empty())
        return nullptr;
    const auto fits = [&](const Slot* slot) { return slot->memory.size() >= wantedBytes; };
    const auto found = std::ranges::find_if(m_free.rbegin(), m_free.rend(), fits);
    const auto chosen = found == m_free.rend() ? std::prev(m_free.end()) : std::prev(found.base());
    Slot* const slot = *chosen;
    m_free.erase(chosen);
    slot->place = Place::Filling;
    return slot;
}

std::size_t VxPipelineImpl::GrownBytes() const
{
    std::size_t grown = 0;
    for (const auto& slot : m_slots)
        grown += slot->GrownBytes(slot->memory.size());
    return grown;
}

VxPipelineImpl::Slot* VxPipelineImpl::PopGrown()
{
    const auto found = std::ranges::find_if(
        m_free, [](const Slot* slot) { return slot->GrownBytes(slot->memory.size()) > 0; });
    if (found == m_free.end())
        return nullptr;
    Slot* const slot = *found;
    m_free.erase(found);
    slot->place = Place::Filling;
    return slot;
}

/// Takes memory back from free buffers that have grown, as far as is needed for one to grow.
/// @param slot  taken
/// @return  false when the others that have grown are all in use
bool VxPipelineImpl::MakeRoom(const Slot& slot, std::size_t wantedBytes)
{
    for (;;) {
        Slot* grown = nullptr;
        {
            const VxLock lock(m_mutex);
            const std::size_t others = GrownBytes() - slot.GrownBytes(slot.memory.size());
            if (others + slot.GrownBytes(wantedBytes) <= kMostGrownBytes)
                return true;
            grown = PopGrown();
            if (grown == nullptr)
                return false;
        }
        grown->Release();
        // Less than was given back, so there is memory for it; if not, it comes back with the next picture.
        std::ignore = grown->Reserve(grown->startBytes);
        GiveBack(*grown);
    }
}

receive::BlockBuffer* VxPipelineImpl::TakeFree(std::size_t wantedBytes)
{
    Slot* slot = nullptr;
    bool isGrowing = false;
    {
        const VxLock lock(m_mutex);
        slot = PopFree(wantedBytes);
        isGrowing = m_isGrowing;
    }
    if (slot == nullptr)
        return nullptr;
    const bool isTooSmall = slot->memory.size() < wantedBytes;
    if (isTooSmall && isGrowing && wantedBytes <= kLargestGrownBytes && MakeRoom(*slot, wantedBytes))
        std::ignore =
            slot->Reserve(wantedBytes); // without memory the block is delivered as too large for its buffer
    return slot;
}

void VxPipelineImpl::Deliver(receive::BlockBuffer& block)
{
    auto& slot = static_cast<Slot&>(block); // every block buffer here is the base of a slot
    slot.Describe();
    {
        const VxLock lock(m_mutex);
        slot.place = Place::Ready;
        m_ready.push_back(&slot);
    }
    m_readyChanged.notify_one(); // outside, so that nobody is woken only to wait for the lock
}

void VxPipelineImpl::GiveBack(receive::BlockBuffer& block)
{
    auto& slot = static_cast<Slot&>(block); // as above
    const VxLock lock(m_mutex);
    slot.place = Place::Free;
    m_free.push_back(&slot);
}
