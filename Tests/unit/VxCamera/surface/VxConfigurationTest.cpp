#include "VxDSSource/camera/VxConfigurationReader.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"

#include "support/genapi/NodeMapFixture.h"

#include <array>
#include <string_view>
#include <utility>

#include "VxCamera/surface/NodeParameterArray.h"
#include "VxDSSource/camera/VxDevice.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxStreamGEV.h"

namespace {

/// A camera that is nothing but its features.
class FeatureDevice final : public VxDevice {
public:
    FeatureDevice()
    {
        auto map = genapi::NodeMap::Load(
            Describe(
                "<Category Name=\"Root\"><pFeature>Width</pFeature></Category>"
                "<Integer "
                "Name=\"Width\"><Value>640</Value><Max>1024</Max><Streamable>Yes</Streamable></Integer>"),
            m_port);
        m_features = NodeParameterArray::Create(*std::move(map));
    }
    ~FeatureDevice() override = default;

    [[nodiscard]] bool IsConnected() const override
    {
        return isConnected && (connectionChecks < 0 || connectionChecks-- > 0);
    }
    VxResult Disconnect() override { return VxResult::Ok(); }
    [[nodiscard]] VxGenParameterArray* GetParameters() override { return m_features.get(); }
    [[nodiscard]] VxGenParameterArray* GetCommunicationParameters() override { return m_features.get(); }
    [[nodiscard]] std::uint32_t GetPayloadSize() override { return 0; }
    VxResult StreamEnable(std::uint32_t) override { return VxResult::Ok(); }
    VxResult StreamDisable(std::uint32_t) override { return VxResult::Ok(); }

    bool isConnected = true;
    mutable int connectionChecks = -1; ///< how often it still says that it is connected; below 0: always

private:
    FakeRegisterPort m_port;
    std::unique_ptr<NodeParameterArray> m_features;
};

constexpr std::array kOrdinarySettings{std::pair{"role", "0"},
                                       std::pair{"unicastport", "0"},
                                       std::pair{"multicastip", "239.192.1.1"},
                                       std::pair{"multicastport", "1042"},
                                       std::pair{"diagnosticsenabled", "false"},
                                       std::pair{"deviceid", "02-00-00-00-00-01"},
                                       std::pair{"paramsource", "0"},
                                       std::pair{"paramchannel", "0"},
                                       std::pair{"buffercount", "16"},
                                       std::pair{"defaultbuffersize", "20971520"},
                                       std::pair{"dropthreshold", "8"},
                                       std::pair{"width", "1920"},
                                       std::pair{"height", "1080"},
                                       std::pair{"outputpixeltype", "0"},
                                       std::pair{"kernelsize", "0"},
                                       std::pair{"zoomvalue", "100"},
                                       std::pair{"outputwidth", "1920"},
                                       std::pair{"outputheight", "1080"}};

VxString Saved(const VxConfigurationWriter& writer)
{
    VxString text;
    EXPECT_TRUE(writer.SaveToString(text).IsOK());
    return text;
}

TEST(VxConfigurationTest, GivesBackTheTextsItWasGiven)
{
    const VxString value(L"any text: \u00FC \u4E2D \"quoted\"\r\n\x01 <&>");
    VxConfigurationWriter writer;
    ASSERT_TRUE(writer.Store(value, VxString("deviceid")).IsOK());
    VxConfigurationReader reader;

    ASSERT_TRUE(reader.LoadFromString(Saved(writer)).IsOK());

    VxString read;
    ASSERT_TRUE(reader.Restore(VxString("deviceid"), read).IsOK());
    EXPECT_EQ(read.Wide(), value.Wide());
}

TEST(VxConfigurationTest, GivesBackHalfOfASurrogatePairInValueAndName)
{
    const std::wstring text = L"half \xD83D and \xDE00";
    VxConfigurationWriter writer;
    ASSERT_TRUE(writer.Store(VxString(text), VxString(text)).IsOK());
    ASSERT_TRUE(writer.Store(VxString("other"), VxString(L"half \xFFFD and \xFFFD")).IsOK());
    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(Saved(writer)).IsOK());

    VxString read;
    ASSERT_TRUE(reader.Restore(VxString(text), read).IsOK());

    EXPECT_EQ(read.Wide(), text);
}

TEST(VxConfigurationTest, SaysThatTheCameraWasLostWhileItWasRead)
{
    FeatureDevice device;
    device.connectionChecks = 1;
    VxConfigurationWriter writer;

    EXPECT_EQ(writer.Store(&device, VxString()).Code(), VxError::LinkLost);

    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(Saved(writer)).IsOK());
    EXPECT_EQ(reader.GetDeviceCount(), 0u);
}

TEST(VxConfigurationTest, ReplacesATextOfTheSameName)
{
    VxConfigurationWriter writer;
    ASSERT_TRUE(writer.Store(VxString("1"), VxString("role")).IsOK());
    ASSERT_TRUE(writer.Store(VxString("2"), VxString("role")).IsOK());
    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(Saved(writer)).IsOK());

    VxString read;
    ASSERT_TRUE(reader.Restore(VxString("role"), read).IsOK());

    EXPECT_EQ(read.Narrow(), "2");
}

TEST(VxConfigurationTest, LeavesTheValueOfAMissingTextUntouched)
{
    VxConfigurationReader reader;
    VxString value("before");

    EXPECT_EQ(reader.Restore(VxString("role"), value).Code(), VxError::NotFound);
    EXPECT_EQ(value.Narrow(), "before");
}

TEST(VxConfigurationTest, KeepsOrdinarySettingsShort)
{
    VxConfigurationWriter writer;
    for (const auto& [name, value] : kOrdinarySettings)
        ASSERT_TRUE(writer.Store(VxString(value), VxString(name)).IsOK());

    EXPECT_LT(Saved(writer).GetLength(), 1500u);
}

TEST(VxConfigurationTest, HoldsNothingAfterABadText)
{
    VxConfigurationWriter writer;
    ASSERT_TRUE(writer.Store(VxString("1"), VxString("role")).IsOK());
    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(Saved(writer)).IsOK());

    EXPECT_EQ(reader.LoadFromString(VxString("garbage")).Code(), VxError::InvalidData);

    VxString value;
    EXPECT_EQ(reader.Restore(VxString("role"), value).Code(), VxError::NotFound);
    EXPECT_EQ(reader.GetDeviceCount(), 0u);
    EXPECT_EQ(reader.GetStreamCount(), 0u);
}

TEST(VxConfigurationTest, StoresAndRestoresADevice)
{
    FeatureDevice device;
    VxConfigurationWriter writer;
    ASSERT_TRUE(writer.Store(&device, VxString()).IsOK());
    ASSERT_TRUE(device.GetParameters()->SetIntegerValue(VxString("Width"), 100).IsOK());
    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(Saved(writer)).IsOK());
    EXPECT_EQ(reader.GetDeviceCount(), 1u);

    EXPECT_TRUE(reader.Restore(0, &device).IsOK());

    std::int64_t width = 0;
    ASSERT_TRUE(device.GetParameters()->GetIntegerValue(VxString("Width"), width).IsOK());
    EXPECT_EQ(width, 640);
}

TEST(VxConfigurationTest, RefusesDevicesThatCannotBeUsed)
{
    FeatureDevice device;
    VxConfigurationWriter writer;
    ASSERT_TRUE(writer.Store(&device, VxString()).IsOK());
    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(Saved(writer)).IsOK());

    EXPECT_EQ(reader.Restore(1, &device).Code(), VxError::NotFound);
    EXPECT_EQ(reader.Restore(0, static_cast<VxDevice*>(nullptr)).Code(), VxError::InvalidParameter);
    EXPECT_EQ(writer.Store(static_cast<VxDevice*>(nullptr), VxString()).Code(), VxError::InvalidParameter);
    device.isConnected = false;
    EXPECT_EQ(reader.Restore(0, &device).Code(), VxError::NotConnected);
    EXPECT_EQ(writer.Store(&device, VxString()).Code(), VxError::NotConnected);
}

TEST(VxConfigurationTest, RefusesStreamsThatAreNotOpen)
{
    VxStreamGEV stream;
    VxConfigurationWriter writer;

    EXPECT_EQ(writer.Store(&stream, VxString()).Code(), VxError::NotOpen);
    EXPECT_EQ(writer.Store(static_cast<VxStream*>(nullptr), VxString()).Code(), VxError::InvalidParameter);
    VxConfigurationReader reader;
    EXPECT_EQ(reader.Restore(0, &stream).Code(), VxError::NotFound);
    ASSERT_TRUE(reader
                    .LoadFromString(VxString(
                        "<VxConfiguration version=\"1\"><Stream name=\"\"></Stream></VxConfiguration>"))
                    .IsOK());
    EXPECT_EQ(reader.GetStreamCount(), 1u);
    EXPECT_EQ(reader.Restore(0, &stream).Code(), VxError::NotOpen);
    EXPECT_EQ(reader.Restore(0, static_cast<VxStream*>(nullptr)).Code(), VxError::InvalidParameter);
}

TEST(VxConfigurationTest, WritesAnEmptyConfigurationThatCanBeRead)
{
    VxConfigurationReader reader;

    EXPECT_TRUE(reader.LoadFromString(Saved(VxConfigurationWriter())).IsOK());
    EXPECT_EQ(reader.GetDeviceCount(), 0u);
}

} // namespace
