#pragma once

#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"
#include "VxCamera/receive/StreamReceiver.h"
#include "VxCamera/surface/CameraNetwork.h"
#include "VxCamera/surface/ParameterList.h"

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
    VxResult Attach(std::unique_ptr<receive::StreamReceiver> receiver);

    /// Ends reception and closes the socket; allowed when nothing is open.
    void Close();

    /// @param sink  borrowed until StopReceiver or Close
    /// @return  NOT_OPEN, OUT_OF_MEMORY, BUSY when another pipeline receives this stream
    VxResult StartReceiver(receive::IBlockSink& sink);
    void StopReceiver(const receive::IBlockSink& sink);

    /// Calls a function with the receiver, if the stream is open; it stays open meanwhile.
    void WithReceiver(const std::function<void(receive::StreamReceiver&)>& use) const;

private:
    CameraNetwork m_network;
    mutable VxMutex m_mutex; // never taken by the receiver's thread, so it may be held while that thread ends
    std::unique_ptr<receive::StreamReceiver> m_receiver VX_GUARDED_BY(m_mutex);
    ParameterList m_parameters; // its features borrow this object
};
