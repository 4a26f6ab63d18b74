#include "CameraLink.h"

#include "VxDSSource/camera/VxGenParameterArray.h"

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>

namespace {

constexpr std::uint32_t kLongestWaitMs = 10'000;
// After which a block is given up. Chosen: what a busy machine does not let its sender send for that long is
// late, not lost.
constexpr std::int64_t kPatientMs = 2000;

} // namespace

VxResult ConnectPatiently(DevicePointer& device, const char* connectionId)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLongestWaitMs);
    VxResult result;
    do {
        device.reset(VxDevice::CreateAndConnect(connectionId, &result));
    } while (result.Code() == VxError::NotFound && std::chrono::steady_clock::now() < end);
    return result;
}

CameraLink::~CameraLink()
{
    if (pipeline)
        std::ignore = pipeline->Stop();
    pipeline.reset();
    std::ignore = stream.Close();
}

void CameraLink::Connect(const char* connectionId)
{
    const VxResult result = ConnectPatiently(device, connectionId);
    ASSERT_TRUE(result.IsOK()) << result.GetDescription().Narrow();
    ASSERT_NE(device, nullptr);
    ASSERT_TRUE(device->IsConnected());
}

void CameraLink::OpenStream(const char* connectionId)
{
    const VxResult opened = stream.Open(connectionId);
    ASSERT_TRUE(opened.IsOK()) << opened.GetDescription().Narrow();
    VxGenParameterArray& receiver = *stream.GetParameters();
    EXPECT_TRUE(receiver.SetIntegerValue("ResendTimeout", kPatientMs).IsOK());
    EXPECT_TRUE(receiver.SetIntegerValue("BlockTimeout", kPatientMs).IsOK());
    pipeline = std::make_unique<VxPipeline>(&stream);
    const VxResult directed =
        Gev().SetStreamDestination(stream.GetLocalIPAddress(), stream.GetLocalPort(), 0);
    ASSERT_TRUE(directed.IsOK()) << directed.GetDescription().Narrow();
}

void CameraLink::Start(std::uint32_t bufferCount)
{
    ASSERT_TRUE(pipeline->SetBufferCount(bufferCount).IsOK());
    pipeline->SetBufferSize(device->GetPayloadSize());
    const VxResult started = pipeline->Start();
    ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
    ASSERT_TRUE(device->StreamEnable(0).IsOK());
    ASSERT_TRUE(Features().ExecuteCommand("AcquisitionStart").IsOK());
}

void CameraLink::Stop()
{
    m_held = nullptr;
    EXPECT_TRUE(Features().ExecuteCommand("AcquisitionStop").IsOK());
    EXPECT_TRUE(device->StreamDisable(0).IsOK());
    EXPECT_TRUE(pipeline->Stop().IsOK());
}

VxBuffer* CameraLink::Next()
{
    if (m_held != nullptr) {
        EXPECT_TRUE(pipeline->ReleaseBuffer(m_held).IsOK());
    }
    m_held = nullptr;
    const VxResult retrieved = pipeline->RetrieveNextBuffer(&m_held, kLongestWaitMs);
    EXPECT_TRUE(retrieved.IsOK()) << retrieved.GetDescription().Narrow();
    return m_held;
}

std::int64_t CameraLink::Statistic(const char* name)
{
    std::int64_t value = -1;
    EXPECT_TRUE(stream.GetParameters()->GetIntegerValue(name, value).IsOK()) << name;
    return value;
}
