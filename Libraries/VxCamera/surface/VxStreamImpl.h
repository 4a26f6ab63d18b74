#pragma once

#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"
#include "VxCamera/receive/StreamReceiver.h"
#include "VxCamera/surface/CameraNetwork.h"
#include "VxCamera/surface/ParameterList.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <functional>
#include <memory>

/// The state behind a VxStream: the receiver while the stream is open, and the features that show its
/// counters.
///
/// Owner:  VxStream.
/// Thread: any.
class VxStreamImpl {
public:
    VxStreamImpl();
    ~VxStreamImpl();
    VxStreamImpl(const VxStreamImpl&) = delete;
    VxStreamImpl& operator=(const VxStreamImpl&) = delete;

    [[nodiscard]] CameraNetwork& Network() { return m_network; }
    [[nodiscard]] ParameterList& Parameters() { return m_parameters; }

    [[nodiscard]] bool IsOpen() const;

    /// @return  ALREADY_OPEN
    VxResult Attach(std::unique_ptr<receive::StreamReceiver> receiver, transport::Ipv4Address reachedAt);
    VxResult Attach(std::unique_ptr<receive::StreamReceiver> receiver);

    /// The own address at which the camera reaches the receiver; 0.0.0.0: every one, or closed.
    [[nodiscard]] transport::Ipv4Address ReachedAt() const;

    /// Ends reception and closes the socket; allowed when nothing is open.
    void Close();

    /// @param sink  borrowed until StopReceiver or Close
    /// @return  NOT_OPEN, OUT_OF_MEMORY, BUSY when another pipeline receives this stream
    VxResult StartReceiver(receive::IBlockSink& sink);
    void StopReceiver(const receive::IBlockSink& sink);
    [[nodiscard]] bool IsReceivingFor(const receive::IBlockSink& sink) const;

    /// Takes a link if the stream is open and receives there.
    void TakeLink(const transport::Ipv4Endpoint& receiver,
                  const std::shared_ptr<const receive::StreamLink>& link);
    void DropLink(const std::shared_ptr<const receive::StreamLink>& link);

    /// Takes what whoever has this link says of the camera's pictures; nothing when it is another's.
    void TakePicture(const std::shared_ptr<const receive::StreamLink>& link,
                     const std::optional<receive::PictureShape>& picture);

    /// The next one in the chain of StreamLinks, which guards it.
    VxStreamImpl* nextStream = nullptr;

    /// How packets are waited for and asked for again; also of a stream that is not open yet.
    [[nodiscard]] receive::AssemblySettings Settings() const;
    void ChangeSettings(const std::function<void(receive::AssemblySettings&)>& change);

    /// Calls a function with the receiver, if the stream is open; it stays open meanwhile.
    void WithReceiver(const std::function<void(receive::StreamReceiver&)>& use) const;

private:
    CameraNetwork m_network;
    mutable VxMutex m_mutex; // never taken by the receiver's thread, so it may be held while that thread ends
    std::unique_ptr<receive::StreamReceiver> m_receiver VX_GUARDED_BY(m_mutex);
    transport::Ipv4Address m_reachedAt VX_GUARDED_BY(m_mutex);
    std::shared_ptr<const receive::StreamLink> m_link VX_GUARDED_BY(m_mutex); // shared, see StreamLink
    receive::AssemblySettings m_settings VX_GUARDED_BY(m_mutex); // kept from one receiver to the next
    ParameterList m_parameters;                                  // its features borrow this object
};
