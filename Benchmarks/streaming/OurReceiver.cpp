#include "ReceiverRun.h"

#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxDeviceGEV.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/camera/VxPipeline.h"
#include "VxDSSource/camera/VxStreamGEV.h"

#include <tuple>

namespace {

constexpr std::uint32_t kBuffers = 16; // as the module's default

struct FreeDevice {
    void operator()(VxDevice* device) const { VxDevice::Free(device); }
};

class OurReceiver final : public IMeasuredReceiver {
public:
    ~OurReceiver() override
    {
        if (m_device != nullptr)
            std::ignore = m_device->GetParameters()->ExecuteCommand("AcquisitionStop");
        if (m_pipeline != nullptr)
            std::ignore = m_pipeline->Stop();
        m_pipeline.reset();
        std::ignore = m_stream.Close();
    }

    std::string Start(const ReceiverOrder& order) override
    {
        VxResult result;
        m_device.reset(VxDevice::CreateAndConnect(order.address.c_str(), &result));
        if (!result.IsOK())
            return result.GetDescription().Narrow();
        VxGenParameterArray& features = *m_device->GetParameters();
        std::ignore = features.SetIntegerValue("Width", order.widthPx);
        std::ignore = features.SetIntegerValue("Height", order.heightPx);
        if (VxGenParameter* const rate = features.Get("AcquisitionFrameRate"))
            std::ignore = rate->FromString(std::to_string(order.framesPerSecond));
        if (const VxResult opened = m_stream.Open(order.address.c_str()); !opened.IsOK())
            return opened.GetDescription().Narrow();
        m_pipeline = std::make_unique<VxPipeline>(&m_stream);
        VxGenParameterArray& link = *m_device->GetCommunicationParameters();
        std::ignore = link.Get("PacketSizeMode")->FromString("Fixed");
        if (const VxResult sized = link.SetIntegerValue("PacketSize", order.packetBytes); !sized.IsOK())
            return sized.GetDescription().Narrow();
        auto* const gev = dynamic_cast<VxDeviceGEV*>(m_device.get());
        if (gev == nullptr ||
            !gev->SetStreamDestination(m_stream.GetLocalIPAddress(), m_stream.GetLocalPort(), 0).IsOK())
            return "the camera takes no destination";
        std::ignore = m_pipeline->SetBufferCount(kBuffers);
        m_pipeline->SetBufferSize(m_device->GetPayloadSize());
        if (const VxResult started = m_pipeline->Start(); !started.IsOK())
            return started.GetDescription().Narrow();
        return features.ExecuteCommand("AcquisitionStart").GetDescription().Narrow();
    }

    bool Next(ReceivedFrame& frame, std::chrono::milliseconds timeout) override
    {
        VxBuffer* buffer = nullptr;
        const auto ms = static_cast<std::uint32_t>(timeout.count()); // some seconds
        if (!m_pipeline->RetrieveNextBuffer(&buffer, ms).IsOK())
            return false;
        frame.isComplete = buffer->GetOperationResult().IsOK();
        frame.blockId = buffer->GetBlockID();
        frame.timestampNs = buffer->GetTimestamp();
        frame.bytes = buffer->GetImage() != nullptr ? buffer->GetImage()->GetSize() : 0;
        std::ignore = m_pipeline->ReleaseBuffer(buffer);
        return true;
    }

    std::uint64_t CameraNowNs() override
    {
        VxGenParameterArray& features = *m_device->GetParameters();
        std::int64_t now = 0;
        std::ignore = features.ExecuteCommand("TimestampLatch");
        std::ignore = features.GetIntegerValue("TimestampLatchValue", now);
        return static_cast<std::uint64_t>(now);
    }

    std::string Counts() override
    {
        std::string counts;
        for (const char* name :
             {"BlockCount", "BlocksDropped", "PipelineBlocksDropped", "ErrorCount", "PacketCount",
              "PacketsMissing", "PacketsRequestedAgain", "PacketsRecovered", "ResendRequests",
              "PacketsRefused", "PacketsDuplicate", "SocketBufferSize"}) {
            std::int64_t value = 0;
            std::ignore = m_stream.GetParameters()->GetIntegerValue(name, value);
            counts += std::string(name) + " " + std::to_string(value) + "; ";
        }
        VxString isRingUsed;
        std::ignore = m_stream.GetParameters()->Get("PacketRingUsed")->ToString(isRingUsed);
        return counts + "PacketRingUsed " + isRingUsed.Narrow();
    }

private:
    std::unique_ptr<VxDevice, FreeDevice> m_device;
    VxStreamGEV m_stream;
    std::unique_ptr<VxPipeline> m_pipeline; // ends before its stream
};

} // namespace

std::unique_ptr<IMeasuredReceiver> MakeOurReceiver()
{
    return std::make_unique<OurReceiver>();
}
