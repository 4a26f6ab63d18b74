#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// How a camera is set up and received for one measurement.
struct ReceiverOrder {
    std::string address = "127.0.0.1";
    std::int64_t packetBytes = 1500;
    std::int64_t widthPx = 1920;
    std::int64_t heightPx = 1080;
    double framesPerSecond = 50;
    std::uint64_t frames = 200; ///< measured; some before them are not
};

/// One frame as a consumer gets it.
struct ReceivedFrame {
    bool isComplete = false;
    std::uint64_t blockId = 0;
    std::uint64_t timestampNs = 0; ///< of the camera
    std::size_t bytes = 0;
};

/// A receiver of a camera's stream: ours, or a peer.
///
/// Owner:  the measurement.
/// Thread: one.
class IMeasuredReceiver {
public:
    IMeasuredReceiver() = default;
    IMeasuredReceiver(const IMeasuredReceiver&) = delete;
    IMeasuredReceiver& operator=(const IMeasuredReceiver&) = delete;
    virtual ~IMeasuredReceiver() = default;

    /// @return  empty, or what went wrong
    [[nodiscard]] virtual std::string Start(const ReceiverOrder& order) = 0;

    /// Waits for the next frame and gives its buffer back at once.
    /// @return  false: none came in time
    [[nodiscard]] virtual bool Next(ReceivedFrame& frame, std::chrono::milliseconds timeout) = 0;

    /// Reads the camera's clock.
    [[nodiscard]] virtual std::uint64_t CameraNowNs() = 0;

    /// What the receiver counted, for people.
    [[nodiscard]] virtual std::string Counts() { return {}; }
};

[[nodiscard]] std::unique_ptr<IMeasuredReceiver> MakeOurReceiver();
[[nodiscard]] std::unique_ptr<IMeasuredReceiver> MakeAravisReceiver();
