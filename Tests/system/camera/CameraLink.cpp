#include "CameraLink.h"

#include "VxDSSource/camera/VxGenParameterArray.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

constexpr std::uint32_t kLongestWaitMs = 10'000;

} // namespace

CameraLink::~CameraLink()
{
    if (pipeline)
        std::ignore = pipeline->Stop();
    pipeline.reset();
    std::ignore = stream.Close();
}

void CameraLink::Connect(const char* connectionId)
{
    VxResult result;
    device.reset(VxDevice::CreateAndConnect(connectionId, &result));
    ASSERT_TRUE(result.IsOK()) << result.GetDescription().Narrow();
    ASSERT_NE(device, nullptr);
    ASSERT_TRUE(device->IsConnected());
}

void CameraLink::OpenStream(const char* connectionId)
{
    const VxResult opened = stream.Open(connectionId);
    ASSERT_TRUE(opened.IsOK()) << opened.GetDescription().Narrow();
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
