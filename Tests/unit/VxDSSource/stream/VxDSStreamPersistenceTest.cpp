#include "VxDSSource/camera/VxConfigurationReader.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"
#include "VxDSSource/filter/DefaultSettings.h"

#include "CanarySample.h"
#include "PinFixture.h"

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

    static constexpr wchar_t kProduct[] = L"SOFTWARE\\Vantrel Technologies Inc\\VxDSSource";

    static HKEY ProductKey()
    {
        HKEY key = nullptr;
        EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, kProduct, 0, nullptr, 0, KEY_ALL_ACCESS,
                                                   nullptr, &key, nullptr));
        return key;
    }

    static bool HasProductKey()
    {
        HKEY key = nullptr;
        const bool isThere = ::RegOpenKeyExW(HKEY_CURRENT_USER, kProduct, 0, KEY_READ, &key) == ERROR_SUCCESS;
        if (isThere)
            ::RegCloseKey(key);
        return isThere;
    }

    static void WriteText(HKEY key, const wchar_t* name, const std::wstring& text)
    {
        EXPECT_EQ(ERROR_SUCCESS,
                  ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                                   static_cast<DWORD>(text.size() * sizeof(wchar_t))));
    }

    /// Whether the acquisition mutex is held while these calls are made, in this order, once each. A frame
    /// finds out: without the mutex it does not ask for a buffer.
    std::shared_ptr<std::vector<bool>> HeldDuring(std::vector<std::string> calls)
    {
        auto held = std::make_shared<std::vector<bool>>();
        TheCamera().log.onCall = [this, held, calls = std::move(calls)](const std::string& call) {
            if (held->size() == calls.size() || call != calls[held->size()])
                return;
            bool isAsked = false;
            TheCamera().onRetrieve = [&] { isAsked = true; };
            std::thread other([&] {
                CanarySample sample(16);
                EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
            });
            other.join();
            TheCamera().onRetrieve = nullptr;
            held->push_back(!isAsked);
        };
        return held;
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

TEST_F(VxDSStreamPersistenceTest, StoresNoStreamThatIsNotOpen)
{
    TheCamera().opening = VxError::NetworkError;
    ConnectAndForget();

    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);

    EXPECT_TRUE(text.Narrow().starts_with("double;device:;text:role=0;"));
    EXPECT_EQ(Done(), Lines{"writer.Store(device, \"\")"});
}

TEST_F(VxDSStreamPersistenceTest, StoresTheStreamOfAReceiverAlone)
{
    Store(Setting::Role, 2);
    ConnectAndForget();

    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);

    EXPECT_TRUE(text.Narrow().starts_with("double;stream:;text:role=2;"));
    EXPECT_EQ(Done(), Lines{"writer.Store(stream, \"\")"});
}

TEST_F(VxDSStreamPersistenceTest, AsksForTheSettingsInTheirOrderAndThenForCameraAndStream)
{
    ConnectAndForget();
    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);
    TheCamera().log.Clear();

    Pin().RestoreConfiguration(text, VxConfigurationForm::Full);

    Lines asked;
    for (const std::string& call : TheCamera().log.All())
        if (call.starts_with("reader."))
            asked.push_back(call);
    EXPECT_EQ(asked, (Lines{"reader.LoadFromString",
                            "reader.Restore(\"role\")",
                            "reader.Restore(\"unicastport\")",
                            "reader.Restore(\"multicastip\")",
                            "reader.Restore(\"multicastport\")",
                            "reader.Restore(\"diagnosticsenabled\")",
                            "reader.Restore(\"deviceid\")",
                            "reader.Restore(\"paramsource\")",
                            "reader.Restore(\"paramchannel\")",
                            "reader.Restore(\"buffercount\")",
                            "reader.Restore(\"defaultbuffersize\")",
                            "reader.Restore(\"dropthreshold\")",
                            "reader.Restore(\"width\")",
                            "reader.Restore(\"height\")",
                            "reader.Restore(\"outputpixeltype\")",
                            "reader.Restore(\"kernelsize\")",
                            "reader.Restore(\"zoomvalue\")",
                            "reader.Restore(\"outputwidth\")",
                            "reader.Restore(\"outputheight\")",
                            "reader.GetDeviceCount",
                            "reader.Restore(0, device)",
                            "reader.GetStreamCount",
                            "reader.Restore(0, stream)"}));
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

TEST_F(VxDSStreamPersistenceTest, RestoresTheCameraAloneWhenItsStreamCannotBeOpened)
{
    ConnectAndForget();
    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);
    Pin().CloseConnection();
    TheCamera().opening = VxError::NetworkError;

    Pin().RestoreConfiguration(text, VxConfigurationForm::Full);

    EXPECT_EQ(TheCamera().restored, Lines{"device"});
}

TEST_F(VxDSStreamPersistenceTest, RestoresTheStreamAloneWhenItsCameraCannotBeConnected)
{
    ConnectAndForget();
    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);
    Pin().CloseConnection();
    TheCamera().connecting = VxError::AccessDenied;

    Pin().RestoreConfiguration(text, VxConfigurationForm::Full);

    EXPECT_EQ(TheCamera().restored, Lines{"stream"});
}

TEST_F(VxDSStreamPersistenceTest, RestoresOnlyWhatTheTextHolds)
{
    ConnectAndForget();

    Pin().RestoreConfiguration(VxString("double;stream:;text:deviceid=cam"), VxConfigurationForm::Full);
    EXPECT_EQ(TheCamera().restored, Lines{"stream"});

    TheCamera().restored.clear();
    Pin().RestoreConfiguration(VxString("double;device:;text:deviceid=cam"), VxConfigurationForm::Full);
    EXPECT_EQ(TheCamera().restored, Lines{"device"});
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

TEST_F(VxDSStreamPersistenceTest, HasDeletedTheOldDefaultWhenANewOneCannotBeWritten)
{
    // A default that is there and can be deleted, but below a key that lets no lasting one be made.
    ::RegCloseKey(CompanyKey(REG_OPTION_VOLATILE));
    HKEY product = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, kProduct, 0, nullptr, REG_OPTION_VOLATILE,
                                               KEY_ALL_ACCESS, nullptr, &product, nullptr));
    WriteText(product, L"Default", L"double;text:zoomvalue=6");
    WriteText(product, L"DefaultSummary", L"the old one");
    ::RegCloseKey(product);
    ASSERT_EQ(Pin().DefaultSummary(), L"the old one");

    EXPECT_FALSE(Pin().SaveDefault());

    EXPECT_FALSE(HasProductKey());
    EXPECT_EQ(Pin().DefaultSummary(), L"");
    EXPECT_EQ(Settings().Number(Setting::ZoomValue), 6u) << "the settings stay";
}

TEST_F(VxDSStreamPersistenceTest, SavesIntoAKeyOfItsOwn)
{
    HKEY product = ProductKey();
    WriteText(product, L"SomethingElse", L"of an older version");
    ::RegCloseKey(product);

    EXPECT_TRUE(Pin().SaveDefault());

    product = ProductKey();
    EXPECT_EQ(::RegQueryValueExW(product, L"SomethingElse", nullptr, nullptr, nullptr, nullptr),
              ERROR_FILE_NOT_FOUND);
    DWORD values = 0;
    EXPECT_EQ(ERROR_SUCCESS, ::RegQueryInfoKeyW(product, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                &values, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(values, 2u);
    ::RegCloseKey(product);
}

TEST_F(VxDSStreamPersistenceTest, SavesOverAKeyThatCannotBeDeleted)
{
    HKEY product = ProductKey();
    HKEY below = nullptr; // a key that has keys cannot be deleted
    ASSERT_EQ(ERROR_SUCCESS,
              ::RegCreateKeyExW(product, L"Below", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &below, nullptr));
    ::RegCloseKey(below);
    ::RegCloseKey(product);
    Store(Setting::DeviceId, L"cam");

    EXPECT_TRUE(Pin().SaveDefault());
    EXPECT_EQ(Pin().DefaultSummary(), L"Controlling and receiving from cam");

    EXPECT_TRUE(Pin().ClearDefault()) << "that nothing was deleted does not matter";
    EXPECT_EQ(Pin().DefaultSummary(), L"");
}

TEST_F(VxDSStreamPersistenceTest, KeepsTheSummaryWhenTheDefaultCannotBeCleared)
{
    ASSERT_TRUE(Pin().SaveDefault());
    ASSERT_EQ(ERROR_SUCCESS, ::RegDeleteTreeW(HKEY_CURRENT_USER, L"SOFTWARE\\Vantrel Technologies Inc"));

    EXPECT_FALSE(Pin().ClearDefault());

    EXPECT_EQ(Pin().DefaultSummary(), L"Controlling and receiving from ");
}

TEST_F(VxDSStreamPersistenceTest, TakesSettingsAloneFromADefault)
{
    HKEY product = ProductKey();
    WriteText(product, L"Default", L"double;device:;stream:;text:deviceid=cam;text:diagnosticsenabled=TRUE");
    WriteText(product, L"DefaultSummary", L"somebody's");
    ::RegCloseKey(product);

    EXPECT_EQ(Settings().Text(Setting::DeviceId), L"cam");

    EXPECT_FALSE(Settings().Flag(Setting::DiagnosticsEnabled));
    EXPECT_EQ(Pin().DefaultSummary(), L"somebody's");
    EXPECT_EQ(TheCamera().liveDevices, 1);
    EXPECT_EQ(TheCamera().restored, Lines{}) << "a camera's configuration is not taken from a default";
}

TEST_F(VxDSStreamPersistenceTest, TakesNothingFromADefaultOfTerminatorsAlone)
{
    HKEY product = ProductKey();
    WriteText(product, L"Default", std::wstring(1, L'\0'));
    WriteText(product, L"DefaultSummary", std::wstring(1, L'\0'));
    ::RegCloseKey(product);

    EXPECT_EQ(Settings().Number(Setting::BufferCount), 16u);

    EXPECT_EQ(Pin().DefaultSummary(), L"");
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamPersistenceTest, LoadsNoDefaultWithoutASummary)
{
    HKEY product = ProductKey();
    WriteText(product, L"Default", L"double;text:zoomvalue=6");
    ::RegCloseKey(product);

    EXPECT_EQ(Settings().Number(Setting::ZoomValue), 0u);
}

TEST_F(VxDSStreamPersistenceTest, LoadsNoDefaultWithASummaryThatIsTooLong)
{
    HKEY product = ProductKey();
    WriteText(product, L"Default", L"double;text:zoomvalue=6");
    WriteText(product, L"DefaultSummary", std::wstring(129, L's'));
    ::RegCloseKey(product);

    EXPECT_EQ(Settings().Number(Setting::ZoomValue), 0u);
    EXPECT_EQ(Pin().DefaultSummary(), L"");
    EXPECT_EQ(Done(), Lines{});
}

// --- The acquisition mutex.

TEST_F(VxDSStreamPersistenceTest, ReadsTheSettingsUnderTheMutexAndWritesTheTextWithoutIt)
{
    ConnectAndForget();
    const auto wasHeld = HeldDuring({"writer.Store(device, \"\")", "writer.SaveToString"});

    (void)Pin().StoreConfiguration(VxConfigurationForm::Full);

    EXPECT_EQ(*wasHeld, (std::vector<bool>{true, false}));
}

TEST_F(VxDSStreamPersistenceTest, TakesSettingsAndCamerasConfigurationUnderTheMutex)
{
    ConnectAndForget();
    const VxString text = Pin().StoreConfiguration(VxConfigurationForm::Full);
    const auto wasHeld = HeldDuring({"reader.LoadFromString", "reader.Restore(0, device)"});

    Pin().RestoreConfiguration(text, VxConfigurationForm::Full);

    EXPECT_EQ(*wasHeld, (std::vector<bool>{true, true}));
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
