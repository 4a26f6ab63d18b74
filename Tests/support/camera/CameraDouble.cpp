#include "support/camera/CameraDouble.h"

#include "support/camera/DoubleImage.h"

#include <gtest/gtest.h>

CameraDouble& TheCamera()
{
    static CameraDouble camera;
    return camera;
}

void CameraDouble::Reset()
{
    EXPECT_EQ(liveDevices, 0) << "a device was not given back";
    EXPECT_EQ(liveStreams, 0) << "a stream was not deleted";
    EXPECT_EQ(livePipelines, 0) << "a pipeline was not deleted";
    EXPECT_EQ(liveBuffers, 0) << "a buffer was not deleted";
    kind = DeviceKind::Gev;
    connecting = VxResult::Ok();
    opening = VxResult::Ok();
    failing.clear();
    payloadBytes = 921600;
    localAddress = "127.0.0.1";
    localPort = 50000;
    device = std::make_unique<ScriptedFeatures>("device");
    device->AddInteger("Width", 640);
    device->AddInteger("Height", 480);
    device->Add<ScriptedCommand>("AcquisitionStart");
    device->Add<ScriptedCommand>("AcquisitionStop");
    communication = std::make_unique<ScriptedFeatures>("communication");
    stream = std::make_unique<ScriptedFeatures>("stream");
    stream->Add<ScriptedCommand>("Reset");
    retrievals.clear();
    m_scripted.clear();
    onRetrieve = nullptr;
    onConnect = nullptr;
    found.clear();
    isConnected = false;
    restored.clear();
    log.onCall = nullptr;
    log.Clear();
}

VxResult CameraDouble::Act(const std::string& call)
{
    log.Add(CallKind::Action, call);
    return !failing.empty() && call.starts_with(failing) ? VxResult(VxError::Busy) : VxResult::Ok();
}

VxBuffer& CameraDouble::QueuePicture(const ScriptedPicture& picture, std::size_t waitingAfter)
{
    auto buffer = std::make_unique<VxBuffer>(VxPayloadType::Image);
    buffer->Impl().operationResult = VxResult::Ok();
    buffer->Impl().image.Become(picture.bytes, picture.widthPx, picture.heightPx, picture.pixelType,
                                picture.rowPaddingBytes);
    return Queue(std::move(buffer), waitingAfter);
}

VxBuffer& CameraDouble::QueueIncomplete(std::size_t waitingAfter)
{
    auto buffer = std::make_unique<VxBuffer>(VxPayloadType::Image);
    buffer->Impl().operationResult = VxError::MissingPackets;
    return Queue(std::move(buffer), waitingAfter);
}

VxBuffer& CameraDouble::Queue(std::unique_ptr<VxBuffer> buffer, std::size_t waitingAfter)
{
    --liveBuffers; // of the script: does not count as left behind
    buffer->Impl().isScripted = true;
    m_scripted.push_back(std::move(buffer));
    retrievals.push_back({m_scripted.back().get(), waitingAfter});
    return *m_scripted.back();
}

std::string CameraDouble::NameOf(const VxBuffer* buffer) const
{
    for (std::size_t index = 0; index < m_scripted.size(); ++index)
        if (m_scripted[index].get() == buffer)
            return std::string("#").append(std::to_string(index));
    return "?";
}
