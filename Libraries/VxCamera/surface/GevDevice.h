#pragma once

#include "VxCamera/control/DeviceSession.h"
#include "VxCamera/control/FoundCamera.h"
#include "VxCamera/control/HeartbeatThread.h"
#include "VxCamera/control/StreamChannel.h"
#include "VxCamera/surface/CameraNetwork.h"
#include "VxCamera/surface/LinkParameters.h"
#include "VxCamera/surface/NodeParameterArray.h"
#include "VxCamera/surface/ParameterList.h"
#include "VxCamera/surface/StreamControl.h"
#include "VxDSSource/camera/VxDeviceGEV.h"

#include "VxBase/VxExpected.h"
#include "VxBase/VxMutex.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// A GigE Vision camera under this host's control.
///
/// Owner:  made by Connect; disposed of by VxDevice::Free.
/// Thread: see VxDevice; the heartbeat has a thread of its own.
class GevDevice final : public VxDeviceGEV {
public:
    /// Finds a camera, takes control of it and loads its description.
    /// @param descriptionFile  bytes to use instead of the file in the camera's memory; empty: the camera's
    /// @return  NOT_FOUND, AMBIGUOUS, ACCESS_DENIED, INVALID_CONFIGURATION, INVALID_DATA, TIMEOUT, ...
    [[nodiscard]] static VxExpected<std::unique_ptr<GevDevice>>
    Connect(const VxString& connectionId, const std::string& descriptionFile = {});
    ~GevDevice() override;

    [[nodiscard]] bool IsConnected() const override;
    VxResult Disconnect() override;
    [[nodiscard]] VxGenParameterArray* GetParameters() override { return m_features.get(); }
    [[nodiscard]] VxGenParameterArray* GetCommunicationParameters() override { return &m_link; }
    [[nodiscard]] std::uint32_t GetPayloadSize() override;
    VxResult StreamEnable(std::uint32_t channel) override;
    VxResult StreamDisable(std::uint32_t channel) override;
    VxResult SetStreamDestination(const VxString& ipAddress, std::uint16_t port,
                                  std::uint32_t channel) override;

private:
    explicit GevDevice(std::unique_ptr<CameraNetwork> network);
    VxResult DisconnectOnce() VX_REQUIRES(m_disconnectMutex);
    VxResult DirectTo(const VxString& ipAddress, std::uint16_t port, std::uint32_t channel);
    VxResult TakeControl(const control::FoundCamera& found);
    VxResult LoadFeatures(const std::string& ownFile);
    void ListLink();
    VxResult Lock(bool isLocked);
    void ForgetValues();
    VxResult StepPacketSizeDown(std::uint32_t channel);
    VxResult UpdatePacketSize(const PacketSizeAccess::Change& change);
    [[nodiscard]] PacketSizeSetting PacketSizeAsSet();
    VxExpected<std::uint32_t> ChoosePacketSize(control::StreamChannel& channel,
                                               transport::Ipv4Address receiver) VX_REQUIRES(m_streamMutex);
    [[nodiscard]] std::uint32_t PacketSizeInForce();

    struct Directed {
        VxResult opened;     ///< whether the camera sends
        VxResult packetSize; ///< a camera that refuses keeps its own, which works too
    };
    Directed Direct() VX_REQUIRES(m_streamMutex);

    struct Destination {
        transport::Ipv4Endpoint receiver;
        std::uint32_t channel = 0;
    };

    const std::unique_ptr<CameraNetwork> m_network; // first: all below borrow from it
    control::FoundCamera m_found;                   // set by TakeControl, constant afterwards
    std::unique_ptr<control::DeviceSession> m_session;
    std::unique_ptr<control::HeartbeatThread> m_heartbeat;

    VxMutex m_disconnectMutex; // held while Disconnect runs, that is for seconds at most

    // What is shown of the packet size, also while m_streamMutex is held for a search.
    std::atomic<std::uint32_t> m_sizeInForce = 0; // bytes; 0: not known
    VxMutex m_packetSizeMutex;                    // held for a copy or a change
    PacketSizeSetting m_packetSize VX_GUARDED_BY(m_packetSizeMutex);

    IVxClock::Time m_packetsSettleAt; // only for the threads of m_streamControl, of which one runs at a time

    VxMutex m_streamMutex; // held while stream channels are set up, that is for some commands
    bool m_isPacketSizeNew VX_GUARDED_BY(m_streamMutex) = false; // set, but not in force
    bool m_isStreaming VX_GUARDED_BY(m_streamMutex) = false;
    bool m_isClosing VX_GUARDED_BY(m_streamMutex) = false;                 // no stream is directed any more
    std::optional<Destination> m_destination VX_GUARDED_BY(m_streamMutex); // as set last

    std::unique_ptr<NodeParameterArray> m_features; // its node map borrows the session
    ParameterList m_link;                           // its features borrow the session
    StreamControl m_streamControl;                  // its thread uses all of the above
};
