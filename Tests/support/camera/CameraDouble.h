#pragma once

#include "VxBase/VxResult.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "support/camera/CallLog.h"
#include "support/camera/ScriptedFeatures.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Kind of camera that answers.
enum class DeviceKind {
    None, ///< CreateAndConnect gives no object
    Gev,
    U3v,
};

/// What a pipeline gives out once.
struct ScriptedRetrieval {
    VxBuffer* buffer = nullptr;   ///< null: nothing arrives in time
    std::size_t waitingAfter = 0; ///< buffers that wait then
};

/// A picture as a test describes it; rows without padding unless said otherwise.
struct ScriptedPicture {
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;
    std::uint32_t pixelType = 0;
    std::vector<std::uint8_t> bytes; ///< may be fewer than the size asks for: a picture that lies
    std::uint32_t rowPaddingBytes = 0;
};

/// One found camera, for discovery.
struct ScriptedDeviceInfo {
    std::string connectionId;
    std::string modelName;
    std::uint32_t type = 0;
    bool isConfigurationValid = true;
};

/// Stands behind the whole camera surface in place of the camera library: records every call in order and
/// answers as it is told. A program has one, because the surface's classes are made by their constructors.
///
/// Owner:  the program (TheCamera); a test starts with Reset.
/// Thread: told what to answer before the calls; called from any thread.
class CameraDouble {
public:
    CameraDouble() { Reset(); }

    /// Forgets everything; no object of the surface may be left.
    void Reset();

    // --- What it answers.
    DeviceKind kind = DeviceKind::Gev;
    VxResult connecting = VxResult::Ok();
    VxResult opening = VxResult::Ok();
    std::string failing; ///< calls that begin so fail, where nothing else says what they answer; empty: none
    std::uint32_t payloadBytes = 0;
    std::string localAddress = "127.0.0.1";
    std::uint16_t localPort = 50000;
    std::unique_ptr<ScriptedFeatures> device; ///< "Width", "Height", "AcquisitionStart", "AcquisitionStop"
    std::unique_ptr<ScriptedFeatures> communication; ///< empty
    std::unique_ptr<ScriptedFeatures> stream;        ///< "Reset"
    std::deque<ScriptedRetrieval> retrievals;        ///< then nothing arrives any more
    std::function<void()> onRetrieve;                ///< called on the streaming thread, before each answer
    std::function<void()> onConnect;                 ///< called inside CreateAndConnect
    std::vector<ScriptedDeviceInfo> found;           ///< on one interface

    // --- What it saw.
    CallLog log;
    bool isConnected = false; ///< of the device; the test may cut the link
    std::atomic<int> liveDevices = 0;
    std::atomic<int> liveStreams = 0;
    std::atomic<int> livePipelines = 0;
    std::atomic<int> liveBuffers = 0;  ///< without those of the script
    std::vector<std::string> restored; ///< "device" and "stream", as configurations were restored into them

    /// Records a call and answers it.
    [[nodiscard]] VxResult Act(const std::string& call);

    /// Queues a complete picture.
    VxBuffer& QueuePicture(const ScriptedPicture& picture, std::size_t waitingAfter = 0);
    /// Queues a block that arrived incomplete.
    VxBuffer& QueueIncomplete(std::size_t waitingAfter = 0);
    /// Queues a time-out.
    void QueueTimeout() { retrievals.push_back({}); }

    [[nodiscard]] std::vector<std::string> Actions() const { return log.Of(CallKind::Action); }
    [[nodiscard]] std::vector<std::string> Pictures() const { return log.Of(CallKind::Picture); }

    /// A name for a buffer of the script in the log: "#0", "#1", ... in the order of queueing.
    [[nodiscard]] std::string NameOf(const VxBuffer* buffer) const;

private:
    VxBuffer& Queue(std::unique_ptr<VxBuffer> buffer, std::size_t waitingAfter);

    std::vector<std::unique_ptr<VxBuffer>> m_scripted;
};

/// The one camera of this program.
[[nodiscard]] CameraDouble& TheCamera();
