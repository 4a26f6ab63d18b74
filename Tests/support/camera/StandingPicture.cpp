#include "support/camera/StandingPicture.h"

#include "VxCamera/surface/ListedInteger.h"
#include "VxCamera/surface/ParameterList.h"
#include "VxCamera/surface/VxBufferImpl.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxDeviceGEV.h"
#include "VxDSSource/camera/VxPipeline.h"
#include "VxDSSource/camera/VxStreamGEV.h"
#include "VxDSSource/camera/VxStreamU3V.h"

#include <algorithm>
#include <random>

namespace {

VxBuffer& Picture()
{
    static VxBuffer picture(VxPayloadType::Image);
    return picture;
}

bool g_isControlAllowed = false; // used by the test's thread only

/// The camera itself, which knows its size and no more.
class StandingDevice final : public VxDeviceGEV {
public:
    StandingDevice()
    {
        const VxImage& image = *Picture().GetImage();
        m_features.Add<ListedInteger>(
            ParameterFacts{"Width", "root", VxGenVisibility::Beginner, ""},
            ListedInteger::Access{[width = image.GetWidth()] { return std::int64_t{width}; }, {}});
        m_features.Add<ListedInteger>(
            ParameterFacts{"Height", "root", VxGenVisibility::Beginner, ""},
            ListedInteger::Access{[height = image.GetHeight()] { return std::int64_t{height}; }, {}});
    }
    ~StandingDevice() override = default;

    [[nodiscard]] bool IsConnected() const override { return m_isConnected; }
    VxResult Disconnect() override
    {
        m_isConnected = false;
        return VxResult::Ok();
    }
    VxGenParameterArray* GetParameters() override { return &m_features; }
    VxGenParameterArray* GetCommunicationParameters() override { return &m_link; }
    std::uint32_t GetPayloadSize() override
    {
        return static_cast<std::uint32_t>(Picture().GetImage()->GetSize());
    }
    VxResult StreamEnable(std::uint32_t) override { return VxResult::Ok(); }
    VxResult StreamDisable(std::uint32_t) override { return VxResult::Ok(); }
    VxResult SetStreamDestination(const VxString&, std::uint16_t, std::uint32_t) override
    {
        return VxResult::Ok();
    }

private:
    bool m_isConnected = true;
    ParameterList m_features;
    ParameterList m_link;
};

} // namespace

void StandingPicture::AllowControl(bool isAllowed)
{
    g_isControlAllowed = isAllowed;
}

bool StandingPicture::Show(std::uint32_t pixelType, std::uint32_t widthPx, std::uint32_t heightPx,
                           std::uint32_t rowPaddingBytes)
{
    VxImage& image = *Picture().GetImage();
    if (!image.Alloc(widthPx, heightPx, pixelType, rowPaddingBytes, 0, 0).IsOK())
        return false;
    std::mt19937 random(1);
    std::generate_n(image.GetDataPointer(), image.GetSize(),
                    [&] { return static_cast<std::uint8_t>(random()); });
    Picture().Impl().operationCode = VxError::Ok;
    return true;
}

VxDevice* VxDevice::CreateAndConnect(const VxString&, VxResult* result)
{
    *result = g_isControlAllowed ? VxResult::Ok() : VxResult(VxError::NotFound);
    return g_isControlAllowed ? new StandingDevice : nullptr;
}

void VxDevice::Free(VxDevice* device)
{
    delete static_cast<StandingDevice*>(device);
}

class VxStreamImpl {
public:
    bool isOpen = false;
    ParameterList parameters;
};

VxStream::VxStream(std::unique_ptr<VxStreamImpl> impl) : m_impl(std::move(impl)) {}
VxStream::~VxStream() = default;

bool VxStream::IsOpen() const
{
    return m_impl->isOpen;
}

VxResult VxStream::Close()
{
    m_impl->isOpen = false;
    return VxResult::Ok();
}

VxGenParameterArray* VxStream::GetParameters()
{
    return &m_impl->parameters;
}

VxStreamGEV::VxStreamGEV() : VxStream(std::make_unique<VxStreamImpl>()) {}
VxStreamGEV::~VxStreamGEV() = default;

VxResult VxStreamGEV::Open(const VxString&)
{
    Impl().isOpen = true;
    return VxResult::Ok();
}

VxResult VxStreamGEV::Open(const VxString& connectionId, std::uint16_t, std::uint16_t, const VxString&,
                           std::uint32_t)
{
    return Open(connectionId);
}

VxResult VxStreamGEV::Open(const VxString& connectionId, const VxString&, std::uint16_t, std::uint16_t,
                           const VxString&, std::uint32_t)
{
    return Open(connectionId);
}

VxString VxStreamGEV::GetLocalIPAddress() const
{
    return "127.0.0.1";
}

std::uint16_t VxStreamGEV::GetLocalPort() const
{
    return 1;
}

VxStreamType VxStreamGEV::GetType() const
{
    return VxStreamType::Gev;
}

VxStreamU3V::VxStreamU3V() : VxStream(std::make_unique<VxStreamImpl>()) {}
VxStreamU3V::~VxStreamU3V() = default;

VxResult VxStreamU3V::Open(const VxString&)
{
    return VxResult(VxError::NotSupported);
}

VxStreamType VxStreamU3V::GetType() const
{
    return VxStreamType::U3v;
}

class VxPipelineImpl {
public:
    bool isStarted = false;
};

VxPipeline::VxPipeline(VxStream*) : m_impl(std::make_unique<VxPipelineImpl>()) {}
VxPipeline::~VxPipeline() = default;

void VxPipeline::SetBufferSize(std::uint32_t) {}

VxResult VxPipeline::SetBufferCount(std::uint32_t)
{
    return VxResult::Ok();
}

void VxPipeline::SetHandleBufferTooSmall(bool) {}

VxResult VxPipeline::Start()
{
    m_impl->isStarted = true;
    return VxResult::Ok();
}

VxResult VxPipeline::Stop()
{
    m_impl->isStarted = false;
    return VxResult::Ok();
}

bool VxPipeline::IsStarted() const
{
    return m_impl->isStarted;
}

VxResult VxPipeline::RetrieveNextBuffer(VxBuffer** buffer, std::uint32_t, VxResult*)
{
    *buffer = &Picture();
    return VxResult::Ok();
}

VxResult VxPipeline::ReleaseBuffer(VxBuffer*)
{
    return VxResult::Ok();
}

std::size_t VxPipeline::GetOutputQueueSize() const
{
    return 0;
}
