#include "VxDSSource/stream/VxDSStream.h"

#include "BaseClasses/CAutoLock.h"
#include "VxBase/VxProcessEnd.h"
#include "VxDSSource/stream/VxMediaTypes.h"

#include <tuple>

using namespace vxds;

void VxDSStream::ApplyConnection()
{
    if (VxProcessEnd::HasBegun())
        return; // the camera library's threads have been ended: nobody would answer
    const AcquisitionMutex::Lock lock(m_acquisitionMutex);
    if (m_link.DiffersFrom(m_settings))
        Reconnect();
    else
        UpdateOutputSize();
}

void VxDSStream::Reconnect()
{
    BeginReconnect();
    try {
        CloseConnection();
        m_link.ConnectDevice(m_settings);
        m_link.OpenStream(m_settings);
        UpdateOutputSize();
        m_link.SendDestination();
        EndReconnect();
    } catch (...) {
        // Half a link would count as what the settings ask for: nobody would ever direct the stream to this
        // host.
        AbandonReconnect();
        throw;
    }
}

void VxDSStream::BeginReconnect()
{
    const CAutoLock linkLock(m_link.Guard());
    ++m_reconnects;
}

void VxDSStream::EndReconnect()
{
    // The streaming thread may be starting or ending: the flag and the start belong together.
    const CAutoLock linkLock(m_link.Guard());
    if (m_reconnects == 1 && m_acquisitionRunning)
        StartAcquisition();
    --m_reconnects;
}

void VxDSStream::AbandonReconnect()
{
    const CAutoLock linkLock(m_link.Guard());
    --m_reconnects;
    StopAndClose();
}

void VxDSStream::CloseConnection()
{
    if (VxProcessEnd::HasBegun())
        return; // as above; the camera lets go by itself after its heartbeat time-out
    const AcquisitionMutex::Lock lock(m_acquisitionMutex);
    const CAutoLock linkLock(m_link.Guard());
    StopAndClose();
}

void VxDSStream::StopAndClose()
{
    try {
        StopAcquisition();
    } catch (...) {
        m_link.Close(); // all the same: the camera stops sending when it is let go, the pipeline when it ends
        throw;
    }
    m_link.Close();
}

void VxDSStream::StartAcquisition()
{
    m_statistics.ResetCounters();
    m_link.Start(m_settings.Number(Setting::DefaultBufferSize));
}

void VxDSStream::StopAcquisition()
{
    m_link.Stop();
}

void VxDSStream::UpdateOutputSize()
{
    const AcquisitionMutex::Lock lock(m_acquisitionMutex);
    if (m_link.HasDevice())
        ReadCameraSize();

    const FrameFormat format = CurrentFrameFormat();
    const PictureSize wanted = DeliveredSize();
    const bool isSame = format.isUsable &&
                        static_cast<std::uint32_t>(format.bitmapWidthPx) == wanted.widthPx &&
                        static_cast<std::uint32_t>(format.bitmapHeightPx) == wanted.heightPx;
    if (!isSame)
        Renegotiate();
}

void VxDSStream::ReadCameraSize()
{
    // An output size of 0 means that of the camera, and becomes it for good.
    if (const auto width = m_link.ReadSize("Width")) {
        m_source.widthPx = *width;
        if (m_settings.Number(Setting::OutputWidth) == 0)
            m_settings.Store(Setting::OutputWidth, *width);
    }
    if (const auto height = m_link.ReadSize("Height")) {
        m_source.heightPx = *height;
        if (m_settings.Number(Setting::OutputHeight) == 0)
            m_settings.Store(Setting::OutputHeight, *height);
    }
    m_zoomTable = ZoomTable(m_source);
    m_settings.Store(Setting::Width, m_settings.Number(Setting::OutputWidth));
    m_settings.Store(Setting::Height, m_settings.Number(Setting::OutputHeight));
}

void VxDSStream::Renegotiate()
{
    const CMediaType current = CopyOfMediaType();
    CMediaType resized;
    if (!BuildResizedType(current, DeliveredSize(), m_settings.Number(Setting::OutputPixelType), resized))
        return;
    // Unconnected, or refused: the type stays, and frame production copes with the difference. The peer is
    // called without the state lock, so that it may ask this pin back from any thread.
    const VxComPtr<IPin> peer = ConnectedPeer();
    if (peer && SUCCEEDED(peer->ReceiveConnection(this, &resized)))
        std::ignore = StoreMediaType(resized); // without memory the old type stays
}

PictureSize VxDSStream::DeliveredSize() const
{
    return {m_settings.Number(Setting::Width), m_settings.Number(Setting::Height)};
}

VxComPtr<IPin> VxDSStream::ConnectedPeer()
{
    const CAutoLock lock(m_pLock);
    return VxComPtr<IPin>(GetConnected());
}
