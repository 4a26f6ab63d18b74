#include "VxDSSource/stream/CameraLink.h"

#include "BaseClasses/CAutoLock.h"
#include "VxDSSource/camera/VxDeviceGEV.h"
#include "VxDSSource/camera/VxDeviceU3V.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenInteger.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxStreamGEV.h"
#include "VxDSSource/camera/VxStreamU3V.h"
#include "VxDSSource/filter/SettingsRecord.h"

#include <tuple>
#include <utility>

namespace vxds {

namespace {

constexpr std::uint32_t kQueuedBuffers = 64; // chosen: more than any sensible "buffercount"
constexpr std::uint32_t kFirstChannel = 0;

/// Ports and channels travel as 16 bits; settings hold 32 and are not tested.
std::uint16_t Low16(std::uint32_t number)
{
    return static_cast<std::uint16_t>(number & 0xFFFFU);
}

std::unique_ptr<VxPipeline> MakePipeline(VxStream& stream, const SettingsRecord& settings)
{
    auto pipeline = std::make_unique<VxPipeline>(&stream);
    pipeline->SetBufferSize(settings.Number(Setting::DefaultBufferSize));
    std::ignore = pipeline->SetBufferCount(settings.Number(Setting::BufferCount)); // else its own default
    pipeline->SetHandleBufferTooSmall(true);
    return pipeline;
}

} // namespace

CameraLink::~CameraLink()
{
    Close();
}

bool CameraLink::DiffersFrom(const SettingsRecord& settings)
{
    const CAutoLock lock(&m_lock);
    return m_applied.DiffersFrom(settings, m_device != nullptr);
}

void CameraLink::ConnectDevice(SettingsRecord& settings)
{
    const CAutoLock lock(&m_lock);
    m_streamChannel = 0;
    const std::wstring deviceId = settings.Text(Setting::DeviceId);
    if (settings.Number(Setting::Role) != kRoleController || m_device != nullptr || deviceId.empty())
        return;

    m_device = VxDevice::CreateAndConnect(deviceId, &m_lastConnectResult);
    if (m_device != nullptr && !m_lastConnectResult.IsOK())
        VxDevice::Free(std::exchange(m_device, nullptr));
    NoteDevice(m_device != nullptr ? LinkEnd::Open : LinkEnd::Absent);
    if (m_device == nullptr)
        return;
    SelectSource(settings);
    std::int64_t channel = 0;
    VxGenInteger* const feature = m_device->GetParameters()->GetInteger("SourceStreamChannel");
    if (feature != nullptr && feature->GetValue(channel).IsOK())
        m_streamChannel = static_cast<std::uint32_t>(channel); // channels are few
}

void CameraLink::SelectSource(SettingsRecord& settings)
{
    VxGenEnum* const selector = m_device->GetParameters()->GetEnum("SourceSelector");
    if (selector == nullptr) {
        m_applied.sourceSelector.clear();
        settings.Store(Setting::ParamSource, std::wstring());
        return;
    }
    VxString present;
    std::ignore = selector->GetValue(present); // unreadable counts as empty
    m_applied.sourceSelector = present.Wide();
    const std::wstring wanted = settings.Text(Setting::ParamSource);
    if (wanted.empty())
        settings.Store(Setting::ParamSource, present.Wide());
    else if (selector->SetValue(wanted).IsOK())
        m_applied.sourceSelector = wanted;
}

void CameraLink::OpenStream(const SettingsRecord& settings)
{
    const CAutoLock lock(&m_lock);
    if (m_stream != nullptr || settings.Text(Setting::DeviceId).empty())
        return;
    std::unique_ptr<VxStream> stream = OpenByRole(settings);
    if (!m_lastOpenResult.IsOK()) {
        NoteStream(LinkEnd::Absent);
        return; // the stream object is deleted
    }
    std::unique_ptr<VxPipeline> pipeline = MakePipeline(*stream, settings);
    m_applied.connectionId = settings.Text(Setting::DeviceId);
    m_applied.channel = settings.Number(Setting::ParamChannel);
    // Together: a stream without a pipeline would never be opened again.
    m_stream = std::move(stream);
    m_pipeline = std::move(pipeline);
    NoteStream(LinkEnd::Open);
}

std::unique_ptr<VxStream> CameraLink::OpenByRole(const SettingsRecord& settings)
{
    const VxString deviceId = settings.Text(Setting::DeviceId);
    if (dynamic_cast<VxDeviceU3V*>(m_device) != nullptr) {
        auto stream = std::make_unique<VxStreamU3V>();
        m_lastOpenResult = stream->Open(deviceId);
        return stream;
    }

    auto stream = std::make_unique<VxStreamGEV>();
    const std::uint32_t role = settings.Number(Setting::Role);
    if (role == kRoleUnicast || role == kRoleMulticast)
        m_streamChannel = settings.Number(Setting::ParamChannel);
    const std::uint16_t channel = Low16(m_streamChannel);
    if (role == kRoleController) {
        m_lastOpenResult = stream->Open(deviceId, std::uint16_t{0}, channel, VxString(), kQueuedBuffers);
    } else if (role == kRoleUnicast) {
        const std::uint16_t port = Low16(settings.Number(Setting::UnicastPort));
        m_lastOpenResult = stream->Open(deviceId, port, channel, VxString(), kQueuedBuffers);
    } else if (role == kRoleMulticast) {
        const VxString group = settings.Text(Setting::MulticastAddress);
        const std::uint16_t port = Low16(settings.Number(Setting::MulticastPort));
        m_lastOpenResult = stream->Open(deviceId, group, port, channel, VxString(), kQueuedBuffers);
    }
    return stream;
}

void CameraLink::SendDestination()
{
    const CAutoLock lock(&m_lock);
    auto* const device = dynamic_cast<VxDeviceGEV*>(m_device);
    auto* const stream = dynamic_cast<VxStreamGEV*>(m_stream.get());
    if (device == nullptr || stream == nullptr)
        return;
    // A refusal shows as a stream without images.
    std::ignore =
        device->SetStreamDestination(stream->GetLocalIPAddress(), stream->GetLocalPort(), m_streamChannel);
}

void CameraLink::Close()
{
    const CAutoLock lock(&m_lock);
    // First all is forgotten: whatever fails here leaves nothing that counts as a link.
    m_applied = {};
    const std::unique_ptr<VxDevice, decltype(&VxDevice::Free)> device(std::exchange(m_device, nullptr),
                                                                      &VxDevice::Free);
    std::unique_ptr<VxStream> stream = std::move(m_stream);
    {
        const VxLock statusLock(m_statusMutex);
        m_lastStatus.device = LinkEnd::Absent;
        m_lastStatus.stream = LinkEnd::Absent;
    }
    m_pipeline.reset();
    if (stream != nullptr && stream->IsOpen())
        std::ignore = stream->Close(); // nothing left to undo
    stream.reset();
    if (device != nullptr && device->IsConnected())
        std::ignore = device->Disconnect(); // nothing left to undo
}

void CameraLink::Start(std::uint32_t defaultBufferBytes)
{
    const CAutoLock lock(&m_lock);
    const std::uint32_t bufferBytes = m_device != nullptr ? m_device->GetPayloadSize() : defaultBufferBytes;
    // Whatever fails here shows as a stream without images.
    if (m_stream != nullptr)
        std::ignore = m_stream->GetParameters()->ExecuteCommand("Reset");
    if (m_pipeline != nullptr) {
        m_pipeline->SetBufferSize(bufferBytes);
        std::ignore = m_pipeline->Start();
    }
    if (m_device != nullptr) {
        std::ignore = m_device->StreamEnable(kFirstChannel);
        std::ignore = m_device->GetParameters()->ExecuteCommand("AcquisitionStart");
    }
}

void CameraLink::Stop()
{
    const CAutoLock lock(&m_lock);
    if (m_device != nullptr) {
        std::ignore = m_device->GetParameters()->ExecuteCommand("AcquisitionStop");
        std::ignore = m_device->StreamDisable(kFirstChannel);
    }
    if (m_pipeline != nullptr && m_pipeline->IsStarted())
        std::ignore = m_pipeline->Stop();
}

bool CameraLink::HasDevice()
{
    const CAutoLock lock(&m_lock);
    return m_device != nullptr;
}

std::optional<std::uint32_t> CameraLink::ReadSize(const char* feature)
{
    const CAutoLock lock(&m_lock);
    std::int64_t pixels = 0;
    if (m_device == nullptr || !m_device->GetParameters()->GetIntegerValue(feature, pixels).IsOK())
        return std::nullopt;
    return static_cast<std::uint32_t>(pixels); // a sensor's size
}

bool CameraLink::WriteSize(const char* feature, std::int32_t pixels)
{
    const CAutoLock lock(&m_lock);
    return m_device != nullptr && m_device->GetParameters()->SetIntegerValue(feature, pixels).IsOK();
}

LinkStatus CameraLink::Status()
{
    LinkStatus status;
    if (m_device != nullptr)
        status.device = m_device->IsConnected() ? LinkEnd::Open : LinkEnd::Closed;
    if (m_stream != nullptr)
        status.stream = m_stream->IsOpen() ? LinkEnd::Open : LinkEnd::Closed;
    status.lastConnectResult = m_lastConnectResult;
    status.lastOpenResult = m_lastOpenResult;
    const VxLock lock(m_statusMutex);
    m_lastStatus = status;
    return status;
}

LinkStatus CameraLink::LastStatus() const
{
    const VxLock lock(m_statusMutex);
    return m_lastStatus;
}

void CameraLink::NoteDevice(LinkEnd device)
{
    const VxLock lock(m_statusMutex);
    m_lastStatus.device = device;
    m_lastStatus.lastConnectResult = m_lastConnectResult;
}

void CameraLink::NoteStream(LinkEnd stream)
{
    const VxLock lock(m_statusMutex);
    m_lastStatus.stream = stream;
    m_lastStatus.lastOpenResult = m_lastOpenResult;
}

VxGenParameterArray* CameraLink::Features(std::uint32_t selector)
{
    if (selector == 0 && m_device != nullptr)
        return m_device->GetCommunicationParameters();
    if (selector == 1 && m_device != nullptr && m_device->IsConnected())
        return m_device->GetParameters();
    if (selector == 2 && m_stream != nullptr && m_stream->IsOpen())
        return m_stream->GetParameters();
    return nullptr;
}

} // namespace vxds
