#pragma once

#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"
#include "VxCamera/receive/IBlockSink.h"
#include "VxDSSource/camera/VxBuffer.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class VxStreamImpl;

/// The buffers of a pipeline and where each of them is: free, being filled, waiting to be retrieved, handed
/// out.
///
/// While blocks arrive the lock is held for a few instructions only, so the receiver's thread never waits for
/// a consumer; Start takes and gives back memory under it, before that thread runs. Lists have room for all
/// buffers from Start on: nothing is allocated while blocks arrive, unless a picture outgrows its buffer.
///
/// Owner:  VxPipeline. Borrows the stream's state.
/// Thread: see VxPipeline; the sink's methods belong to the receiver's thread.
class VxPipelineImpl final : public receive::IBlockSink {
public:
    explicit VxPipelineImpl(VxStreamImpl& stream);
    ~VxPipelineImpl() override;

    void SetBufferSize(std::size_t bytes);
    VxResult SetBufferCount(std::size_t count);
    void SetGrowing(bool isGrowing);
    VxResult Start();
    VxResult Stop();
    [[nodiscard]] bool IsStarted() const;
    VxResult Retrieve(VxBuffer** buffer, std::chrono::milliseconds timeout);
    VxResult Release(const VxBuffer* buffer);
    [[nodiscard]] std::size_t ReadyCount() const;

    [[nodiscard]] receive::BlockBuffer* TakeFree(std::size_t wantedBytes) override;
    void Deliver(receive::BlockBuffer& block) override;
    void GiveBack(receive::BlockBuffer& block) override;

private:
    enum class Place { Free, Filling, Ready, HandedOut };
    struct Slot : receive::BlockBuffer {
        VxBuffer buffer{VxPayloadType::Image};
        Place place = Place::Free;
        std::size_t startBytes = 0; ///< what Start gave it
        /// How much larger than that it is with so many bytes.
        [[nodiscard]] std::size_t GrownBytes(std::size_t bytes) const
        {
            return bytes > startBytes ? bytes - startBytes : 0;
        }
        VxResult Reserve(std::size_t bytes);
        void Release();
        void TakeBack();
        void Describe();
    };
    VxResult Allocate(std::size_t count, std::size_t bytes);
    /// @return  OK, NOT_STARTED, ABORTED or TIMEOUT
    [[nodiscard]] VxError TakeReady(VxBuffer** buffer, std::chrono::milliseconds timeout);
    [[nodiscard]] bool TakeBack(const VxBuffer* buffer);
    Slot* PopFree(std::size_t wantedBytes) VX_REQUIRES(m_mutex);
    [[nodiscard]] bool MakeRoom(const Slot& slot, std::size_t wantedBytes);
    Slot* PopGrown() VX_REQUIRES(m_mutex);
    [[nodiscard]] std::size_t GrownBytes() const VX_REQUIRES(m_mutex);

    VxStreamImpl& m_stream; // borrowed: the stream outlives its pipeline

    mutable VxMutex m_mutex;
    std::condition_variable_any m_readyChanged;
    std::vector<std::unique_ptr<Slot>> m_slots VX_GUARDED_BY(m_mutex);
    std::vector<Slot*> m_free VX_GUARDED_BY(m_mutex);  // last in, first out: its memory is still in the cache
    std::vector<Slot*> m_ready VX_GUARDED_BY(m_mutex); // oldest first
    std::size_t m_bufferBytes VX_GUARDED_BY(m_mutex) = 0;
    std::size_t m_bufferCount VX_GUARDED_BY(m_mutex);
    bool m_isGrowing VX_GUARDED_BY(m_mutex) = false;
    bool m_isStarted VX_GUARDED_BY(m_mutex) = false;
};
