// The receivers.

#include "VxDSSource/camera/VxStreamGEV.h"
#include "VxDSSource/camera/VxStreamU3V.h"

#include "support/camera/CameraDouble.h"

class VxStreamImpl {
public:
    bool isOpen = false;
};

namespace {

std::string Quoted(const VxString& text)
{
    return "\"" + text.Narrow() + "\"";
}

} // namespace

VxStream::VxStream(std::unique_ptr<VxStreamImpl> impl) : m_impl(std::move(impl))
{
    ++TheCamera().liveStreams;
}

VxStream::~VxStream()
{
    TheCamera().log.Add(CallKind::Action, "delete stream");
    --TheCamera().liveStreams;
}

bool VxStream::IsOpen() const
{
    TheCamera().log.Add(CallKind::Query, "stream.IsOpen");
    return m_impl->isOpen;
}

VxResult VxStream::Close()
{
    m_impl->isOpen = false;
    return TheCamera().Act("stream.Close");
}

VxGenParameterArray* VxStream::GetParameters()
{
    return TheCamera().stream.get();
}

VxStreamGEV::VxStreamGEV() : VxStream(std::make_unique<VxStreamImpl>())
{
    TheCamera().log.Add(CallKind::Action, "new VxStreamGEV");
}

VxStreamGEV::~VxStreamGEV() = default;

VxResult VxStreamGEV::Open(const VxString& connectionId)
{
    TheCamera().log.Add(CallKind::Action, "stream.Open(" + Quoted(connectionId) + ")");
    Impl().isOpen = TheCamera().opening.IsOK();
    return TheCamera().opening;
}

VxResult VxStreamGEV::Open(const VxString& connectionId, std::uint16_t localPort, std::uint16_t channel,
                           const VxString& localIpAddress, std::uint32_t bufferCapacity)
{
    TheCamera().log.Add(CallKind::Action, "stream.Open(" + Quoted(connectionId) + ", port " +
                                              std::to_string(localPort) + ", channel " +
                                              std::to_string(channel) + ", " + Quoted(localIpAddress) + ", " +
                                              std::to_string(bufferCapacity) + ")");
    Impl().isOpen = TheCamera().opening.IsOK();
    return TheCamera().opening;
}

VxResult VxStreamGEV::Open(const VxString& connectionId, const VxString& multicastAddress,
                           std::uint16_t dataPort, std::uint16_t channel, const VxString& localIpAddress,
                           std::uint32_t bufferCapacity)
{
    TheCamera().log.Add(CallKind::Action,
                        "stream.Open(" + Quoted(connectionId) + ", group " + Quoted(multicastAddress) +
                            ", port " + std::to_string(dataPort) + ", channel " + std::to_string(channel) +
                            ", " + Quoted(localIpAddress) + ", " + std::to_string(bufferCapacity) + ")");
    Impl().isOpen = TheCamera().opening.IsOK();
    return TheCamera().opening;
}

VxString VxStreamGEV::GetLocalIPAddress() const
{
    TheCamera().log.Add(CallKind::Query, "stream.GetLocalIPAddress");
    return TheCamera().localAddress;
}

std::uint16_t VxStreamGEV::GetLocalPort() const
{
    TheCamera().log.Add(CallKind::Query, "stream.GetLocalPort");
    return TheCamera().localPort;
}

VxStreamType VxStreamGEV::GetType() const
{
    return VxStreamType::Gev;
}

VxStreamU3V::VxStreamU3V() : VxStream(std::make_unique<VxStreamImpl>())
{
    TheCamera().log.Add(CallKind::Action, "new VxStreamU3V");
}

VxStreamU3V::~VxStreamU3V() = default;

VxResult VxStreamU3V::Open(const VxString& connectionId)
{
    TheCamera().log.Add(CallKind::Action, "stream.Open(" + Quoted(connectionId) + ")");
    Impl().isOpen = TheCamera().opening.IsOK();
    return TheCamera().opening;
}

VxStreamType VxStreamU3V::GetType() const
{
    return VxStreamType::U3v;
}
