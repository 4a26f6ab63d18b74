#include "CameraLink.h"

#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

namespace {

/// The fake camera of aravis-tools, which somebody else wrote; the driver of this test has started it.
class AravisCameraTest : public testing::Test {
protected:
    void SetUp() override
    {
        const char* const address = std::getenv("VX_CAMERA");
        ASSERT_NE(address, nullptr) << "run through Tests/system/run-with-camera";
        m_address = address;
    }

    std::string m_address;
    CameraLink m_link;
};

TEST_F(AravisCameraTest, ItsFeatureTreeLoads)
{
    m_link.Connect(m_address.c_str());

    VxString vendor;
    std::int64_t width = 0;
    ASSERT_NE(m_link.Features().Get("DeviceVendorName"), nullptr);
    EXPECT_TRUE(m_link.Features().Get("DeviceVendorName")->ToString(vendor).IsOK());
    EXPECT_EQ(vendor, "Aravis");
    EXPECT_TRUE(m_link.Features().GetIntegerValue("Width", width).IsOK());
    EXPECT_EQ(width, 512);
    EXPECT_EQ(m_link.device->GetPayloadSize(), 512u * 512u);
}

TEST_F(AravisCameraTest, FiftyFramesArriveWithoutLossAndChange)
{
    m_link.Connect(m_address.c_str());
    ASSERT_TRUE(m_link.Features().Get("AcquisitionFrameRate")->FromString("50").IsOK());
    m_link.OpenStream(m_address.c_str());
    m_link.Start();

    std::uint64_t last = 0;
    std::set<std::string> pictures;
    for (int i = 0; i < 50; ++i) {
        const VxBuffer* const buffer = m_link.Next();
        ASSERT_NE(buffer, nullptr);
        ASSERT_TRUE(buffer->GetOperationResult().IsOK())
            << buffer->GetOperationResult().GetDescription().Narrow();
        ASSERT_EQ(buffer->GetImage()->GetWidth(), 512u);
        ASSERT_EQ(buffer->GetImage()->GetHeight(), 512u);
        EXPECT_TRUE(last == 0 || buffer->GetBlockID() == last + 1);
        last = buffer->GetBlockID();
        const auto* const pixels = reinterpret_cast<const char*>(buffer->GetImage()->GetDataPointer());
        pictures.emplace(pixels, buffer->GetImage()->GetSize());
    }

    EXPECT_EQ(m_link.Statistic("BlocksDropped"), 0);
    EXPECT_EQ(m_link.Statistic("ErrorCount"), 0);
    EXPECT_GT(pictures.size(), 40u);
    m_link.Stop();
}

TEST_F(AravisCameraTest, ItCanBeConnectedAgainAndAgain)
{
    for (int i = 0; i < 5; ++i) {
        m_link.Connect(m_address.c_str());
        EXPECT_TRUE(m_link.device->Disconnect().IsOK());
        m_link.device.reset();
    }
}

TEST_F(AravisCameraTest, ASecondControllerIsDenied)
{
    m_link.Connect(m_address.c_str());

    VxResult result;
    const DevicePointer second(VxDevice::CreateAndConnect(m_address.c_str(), &result));

    EXPECT_EQ(result.Code(), VxError::AccessDenied);
    EXPECT_TRUE(m_link.device->IsConnected());
}

} // namespace
