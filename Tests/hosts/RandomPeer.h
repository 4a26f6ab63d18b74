#pragma once

#include "hosts/SmallAllocator.h"
#include "support/directshow/SinkFilter.h"
#include "unit/VxDSSource/stream/RenegotiatingSink.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

/// A peer downstream that does what the test says: ready, slow or unwilling, with buffers of its own or
/// without; and a judge of what comes.
///
/// Owner:  the test; the graph must be gone before it.
/// Thread: Take on the streaming thread, the others on the test's.
class RandomPeer final {
public:
    /// How it takes samples.
    enum class Taking { Readily, Slowly, NotAtAll, AsWhileFlushing };

    RandomPeer();

    /// What joins a graph, and its pin.
    [[nodiscard]] IBaseFilter& Filter() { return m_filter; }
    [[nodiscard]] IPin& Pin() { return m_pin; }
    [[nodiscard]] bool IsConnected() const { return m_pin.inner.Connected() != nullptr; }

    // What it shall do.
    std::atomic<Taking> taking = Taking::Readily;
    bool refusesConnections = false;
    void AnswerRenegotiation(HRESULT answer) { m_pin.renegotiating = answer; }
    /// @param sampleBytes  of each buffer; 0: it has no allocator of its own
    void UseOwnBuffers(std::size_t sampleBytes);
    /// Asks for a type with the next buffer of its own.
    void Ask(const AM_MEDIA_TYPE& type) { m_small.AttachToNext(type); }
    [[nodiscard]] bool HasAsked() const { return m_small.HasAttached(); }

    // What the source was told: nothing may come any more, or something may; whether the graph has a clock.
    void ExpectSamples();
    void ExpectNoMoreSamples();
    std::atomic<bool> hasClock = false;

    // What it saw.
    [[nodiscard]] bool IsTaking() const { return m_isTaking; }
    [[nodiscard]] int ConnectionAttempts() const { return m_attempts; }
    [[nodiscard]] int Samples() { return m_pin.inner.samples.Count(); }
    [[nodiscard]] int SmallSamples() const { return m_small.Given(); }
    /// Of these, samples that were not all zero.
    [[nodiscard]] int Pictures() const { return m_pictures; }
    /// What was wrong first; empty as long as all is right.
    [[nodiscard]] std::string Fault() const;
    /// The last sample that was not all zero; empty before one.
    [[nodiscard]] std::vector<std::byte> Picture() const;
    void ForgetPicture();

private:
    HRESULT Take(IMediaSample& sample);
    void JudgeMemory(IMediaSample& sample);
    void JudgeTime(IMediaSample& sample);
    void JudgeArrival(const char* fault);
    void Note(const std::string& fault);

    std::atomic<bool> m_isStopped = true; // nothing may come
    std::atomic<bool> m_isTaking = false;
    std::atomic<int> m_attempts = 0;
    std::atomic<int> m_pictures = 0;
    mutable std::mutex m_mutex;
    std::string m_fault;              // guarded by m_mutex
    std::vector<std::byte> m_picture; // guarded by m_mutex

    SmallAllocator m_small;
    SinkFilter m_filter;
    RenegotiatingSink m_pin{&m_filter};
};
