#pragma once

#include "support/directshow/SinkFilter.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <vector>

/// A sample as an application's sink got it.
struct HostSample {
    std::vector<std::byte> bytes; ///< as many as the sample says that it holds
    HRESULT timed = E_FAIL;       ///< of GetTime
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    bool hasNewType = false; ///< a media type came with it
};

/// The sink of an application's graph: keeps what it gets.
///
/// Owner:  the test.
/// Thread: Receive on the streaming thread, the others on the test's.
class HostSink final {
public:
    HostSink();

    /// What joins the graph.
    [[nodiscard]] SinkFilter& Filter() { return m_filter; }
    [[nodiscard]] SinkPin& Pin() { return m_filter.pin; }

    /// Waits until so many samples came since the beginning.
    [[nodiscard]] bool WaitForSamples(std::size_t count);

    /// Everything that came until now.
    [[nodiscard]] std::vector<HostSample> Samples() const;

    /// The type of the connection.
    [[nodiscard]] CMediaType Type();

private:
    void Keep(IMediaSample& sample);

    mutable std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<HostSample> m_samples; // guarded by m_mutex
    SinkFilter m_filter;
};
