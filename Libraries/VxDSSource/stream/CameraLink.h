#pragma once

#include "BaseClasses/CCritSec.h"
#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"
#include "VxDSSource/camera/VxDevice.h"
#include "VxDSSource/camera/VxPipeline.h"
#include "VxDSSource/camera/VxStream.h"
#include "VxDSSource/overlay/LinkStatus.h"
#include "VxDSSource/stream/AppliedConnection.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class VxGenParameterArray;

namespace vxds {

class SettingsRecord;

/// The whole link to the camera: device, stream and pipeline, and what is known of the last attempt to make
/// them.
///
/// The steps are the pin's to order (VxDSStream::ApplyConnection). None of them reports a failure: the two
/// results kept here are the only record (Status).
///
/// Owner:  VxDSStream, by value.
/// Thread: any. Link and pipeline change only while the caller holds the acquisition mutex as well, so frame
///         production, which holds it, may use the pipeline without this object's lock. Everybody else goes
///         through the lock, which is never held while calling anything but the camera library.
class CameraLink {
public:
    CameraLink() = default;
    ~CameraLink();
    CameraLink(const CameraLink&) = delete;
    CameraLink& operator=(const CameraLink&) = delete;

    /// For steps that belong together; each step takes it by itself.
    [[nodiscard]] CCritSec* Guard() { return &m_lock; }

    [[nodiscard]] bool DiffersFrom(const SettingsRecord& settings);

    /// Role 0 only: connects to the camera, selects its source and reads its stream channel. The setting
    /// "paramsource" learns the camera's source when it is empty, and becomes empty when the camera has none.
    void ConnectDevice(SettingsRecord& settings);

    /// Opens the stream in its role and puts a pipeline on it.
    void OpenStream(const SettingsRecord& settings);

    /// Directs a GigE Vision camera's stream to this host, where both are there.
    void SendDestination();

    /// Deletes pipeline and stream, gives the camera back, forgets what was applied; not the two results.
    void Close();

    /// @param defaultBufferBytes  for a stream without a camera object; else the camera's payload size counts
    void Start(std::uint32_t defaultBufferBytes);
    void Stop();

    [[nodiscard]] bool HasDevice();

    /// Reads a size feature of the camera; nothing when there is no camera or it cannot be read.
    [[nodiscard]] std::optional<std::uint32_t> ReadSize(const char* feature);

    /// @return  false when there is no camera or it refuses
    [[nodiscard]] bool WriteSize(const char* feature, std::int32_t pixels);

    /// Features of the link (0, with any device object), of the camera (1, connected) or of the stream (2,
    /// open); borrowed: the caller holds Guard for as long as it uses them. Null when they are not there.
    [[nodiscard]] VxGenParameterArray* Features(std::uint32_t selector);

    /// Borrowed: the caller holds the acquisition mutex or Guard. Null when not there.
    [[nodiscard]] VxDevice* Device() const { return m_device; }
    [[nodiscard]] VxStream* Stream() const { return m_stream.get(); }
    [[nodiscard]] VxPipeline* Pipeline() const { return m_pipeline.get(); }

    /// Asks device and stream how they are. The caller holds the acquisition mutex or Guard.
    [[nodiscard]] LinkStatus Status();
    /// What was seen last or became known since, without asking anybody. Any thread, at any time: also while
    /// the link is busy.
    [[nodiscard]] LinkStatus LastStatus() const;

private:
    void SelectSource(SettingsRecord& settings);
    [[nodiscard]] std::unique_ptr<VxStream> OpenByRole(const SettingsRecord& settings);
    void NoteDevice(LinkEnd device);
    void NoteStream(LinkEnd stream);

    CCritSec m_lock;
    VxDevice* m_device = nullptr; // owned: given back with VxDevice::Free
    std::unique_ptr<VxStream> m_stream;
    std::unique_ptr<VxPipeline> m_pipeline; // on m_stream, so after it
    std::uint32_t m_streamChannel = 0;      // of the camera in role 0, else as set
    AppliedConnection m_applied;
    VxResult m_lastConnectResult;
    VxResult m_lastOpenResult;
    mutable VxMutex m_statusMutex; // nothing is called while it is held
    LinkStatus m_lastStatus VX_GUARDED_BY(m_statusMutex);
};

} // namespace vxds
