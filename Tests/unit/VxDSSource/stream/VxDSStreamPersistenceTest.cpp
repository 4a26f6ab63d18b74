#include "VxDSSource/camera/VxConfigurationReader.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"
#include "VxDSSource/filter/DefaultSettings.h"

#include "PinFixture.h"

#include <algorithm>

namespace {

using vxds::Setting;

class VxDSStreamPersistenceTest : public PinFixture {
protected:
    /// The entries of a configuration, by the reader that any program has.
    static std::string EntryOf(const VxString& configuration, const char* key)
    {
        VxConfigurationReader reader;
        EXPECT_TRUE(reader.LoadFromString(configuration).IsOK());
        VxString value("(none)");
        (void)reader.Restore(VxString(key), value);
        return value.Narrow();
    }

    /// A configuration with the given texts only.
    static VxString Configuration(std::initializer_list<std::pair<const char*, const char*>> entries)
    {
        VxConfigurationWriter writer;
        for (const auto& [key, value] : entries)
            (void)writer.Store(VxString(value), VxString(key));
        VxString text;
        (void)writer.SaveToString(text);
        return text;
    }

    static HKEY CompanyKey(DWORD options)
    {
        HKEY key = nullptr;
        EXPECT_EQ(ERROR_SUCCESS,
                  ::RegCreateKeyExW(HKEY_CURRENT_USER, L"SOFTWARE\\Vantrel Technologies Inc", 0, nullptr,
                                    options, KEY_ALL_ACCESS, nullptr, &key, nullptr));
        return key;
    }
};

TEST_F(VxDSStreamPersistenceTest, StoresTheSettingsInTheirOrder)
{
    Store(Setting::BufferCount, 4294967295u);
    Store(Setting::DeviceId, L"cam; x=1");

    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::SettingsOnly);

    EXPECT_EQ(
        text.Narrow(),
        "double;text:role=0;text:unicastport=0;text:multicastip=239.192.1.1;text:multicastport=1042;"
        "text:diagnosticsenabled=false;text:deviceid=cam%3B x%3D1;text:paramsource=;text:paramchannel=0;"
        "text:buffercount=-1;text:defaultbuffersize=4147200;text:dropthreshold=1;text:width=1280;"
        "text:height=720;text:outputpixeltype=0;text:kernelsize=0;text:zoomvalue=0;text:outputwidth=0;"
        "text:outputheight=0");
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamPersistenceTest, StoresCameraAndStreamFirstInTheFullForm)
{
    ConnectAndForget();

    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);

    EXPECT_TRUE(text.Narrow().starts_with("double;device:;stream:;text:role=0;"));
    EXPECT_EQ(Done(), (Lines{"writer.Store(device, \"\")", "writer.Store(stream, \"\")"}));
}

TEST_F(VxDSStreamPersistenceTest, StoresNoCameraThatIsGone)
{
    ConnectAndForget();
    TheCamera().isConnected = false;

    (void)Pin().StoreConfiguration(VxConfigurationForm::Full);

    EXPECT_EQ(Done(), Lines{"writer.Store(stream, \"\")"});
}

TEST_F(VxDSStreamPersistenceTest, RestoresConnectsAndThenRestoresCameraAndStream)
{
    ConnectAndForget();
    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);
    Pin().CloseConnection();
    Store(Setting::DeviceId, L"");
    TheCamera().log.Clear();

    Pin().RestoreConfiguration(text, VxConfigurationForm::Full);

    const Lines done = Done();
    EXPECT_EQ(done.at(0), "CreateAndConnect(cam)");
    EXPECT_EQ(Lines(done.end() - 2, done.end()),
              (Lines{"reader.Restore(0, device)", "reader.Restore(0, stream)"}));
}

TEST_F(VxDSStreamPersistenceTest, RestoresNoCameraConfigurationFromSettingsAlone)
{
    ConnectAndForget();
    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);
    TheCamera().log.Clear();

    Pin().RestoreConfiguration(text, VxConfigurationForm::SettingsOnly);

    EXPECT_EQ(TheCamera().restored, Lines{});
}

TEST_F(VxDSStreamPersistenceTest, RestoresNoCameraConfigurationIntoACameraThatIsNotThere)
{
    ConnectAndForget();
    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);
    Pin().CloseConnection();
    TheCamera().connecting = VxError::NotFound;
    TheCamera().opening = VxError::NotFound;

    Pin().RestoreConfiguration(text, VxConfigurationForm::Full);

    EXPECT_EQ(TheCamera().restored, Lines{});
}

TEST_F(VxDSStreamPersistenceTest, LeavesASettingUntouchedThatTheTextDoesNotHave)
{
    Store(Setting::KernelSize, 5);
    Store(Setting::MulticastAddress, L"239.0.0.7");
    Store(Setting::DiagnosticsEnabled, 1);

    Pin().RestoreConfiguration(Configuration({{"zoomvalue", "4"}}), VxConfigurationForm::Full);

    EXPECT_EQ(Settings().Number(Setting::ZoomValue), 4u);
    EXPECT_EQ(Settings().Number(Setting::KernelSize), 5u);
    EXPECT_EQ(Settings().Text(Setting::MulticastAddress), L"239.0.0.7");
    EXPECT_TRUE(Settings().Flag(Setting::DiagnosticsEnabled));
}

TEST_F(VxDSStreamPersistenceTest, RestoresAFlagFromOneWordOnly)
{
    Store(Setting::DiagnosticsEnabled, 1);

    Pin().RestoreConfiguration(Configuration({{"diagnosticsenabled", "TRUE"}}), VxConfigurationForm::Full);

    EXPECT_FALSE(Settings().Flag(Setting::DiagnosticsEnabled));
    EXPECT_TRUE(Pin().Statistics().IsClearPending()) << "what the diagnostics drew must go";
}

TEST_F(VxDSStreamPersistenceTest, IgnoresATextThatIsNoConfigurationAndConnectsAllTheSame)
{
    Store(Setting::DeviceId, L"cam");

    Pin().RestoreConfiguration(VxString("nonsense"), VxConfigurationForm::Full);

    EXPECT_EQ(Settings().Text(Setting::DeviceId), L"cam");
    EXPECT_EQ(Done().front(), "CreateAndConnect(cam)");
}

TEST_F(VxDSStreamPersistenceTest, SavesADefaultThatTheNextPinTakesAndConnectsTo)
{
    Store(Setting::DeviceId, L"cam");
    Store(Setting::ZoomValue, 3);
    EXPECT_TRUE(Pin().SaveDefault());
    EXPECT_EQ(Pin().DefaultSummary(), L"Controlling and receiving from cam");
    DestroyPin();
    TheCamera().log.Clear();

    Pin();

    EXPECT_EQ(Settings().Text(Setting::DeviceId), L"cam");
    EXPECT_EQ(Settings().Number(Setting::ZoomValue), 3u);
    EXPECT_EQ(Pin().DefaultSummary(), L"Controlling and receiving from cam");
    EXPECT_EQ(Done().front(), "CreateAndConnect(cam)");
}

TEST_F(VxDSStreamPersistenceTest, SavesSettingsWithoutTheCamerasConfiguration)
{
    ConnectAndForget();
    ASSERT_TRUE(Pin().SaveDefault());

    const auto saved = vxds::DefaultSettings().Load();

    ASSERT_TRUE(saved);
    EXPECT_EQ(VxString(saved->configuration).Narrow(),
              Pin().StoreConfiguration(VxConfigurationForm::SettingsOnly).Narrow());
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamPersistenceTest, ClearsTheDefault)
{
    EXPECT_FALSE(Pin().ClearDefault()) << "nothing was ever saved on this account";
    ASSERT_TRUE(Pin().SaveDefault());

    EXPECT_TRUE(Pin().ClearDefault());

    EXPECT_EQ(Pin().DefaultSummary(), L"");
    EXPECT_FALSE(vxds::DefaultSettings().Load());
}

TEST_F(VxDSStreamPersistenceTest, IgnoresADefaultOfAnUnknownRole)
{
    Store(Setting::Role, 5);
    Store(Setting::ZoomValue, 3);
    ASSERT_TRUE(Pin().SaveDefault());
    EXPECT_EQ(Pin().DefaultSummary(), L"");
    DestroyPin();

    EXPECT_EQ(Settings().Number(Setting::ZoomValue), 0u);
    EXPECT_EQ(Settings().Number(Setting::Role), 0u);
}

TEST_F(VxDSStreamPersistenceTest, FailsToSaveWhereTheRegistryCannotBeWritten)
{
    ::RegCloseKey(CompanyKey(REG_OPTION_VOLATILE)); // no key that lasts can be made below

    EXPECT_FALSE(Pin().SaveDefault());
    EXPECT_EQ(Pin().DefaultSummary(), L"");
}

TEST_F(VxDSStreamPersistenceTest, ForgetsTheSummaryWhenSavingFailsAfterTheOldDefaultIsGone)
{
    ASSERT_TRUE(Pin().SaveDefault());
    HKEY company = CompanyKey(0);
    ASSERT_EQ(ERROR_SUCCESS, ::RegDeleteTreeW(HKEY_CURRENT_USER, L"SOFTWARE\\Vantrel Technologies Inc"));
    ::RegCloseKey(company);
    ::RegCloseKey(CompanyKey(REG_OPTION_VOLATILE));

    EXPECT_FALSE(Pin().SaveDefault());

    EXPECT_EQ(Pin().DefaultSummary(), L"");
}

} // namespace
