#include "FilterFixture.h"
#include "support/directshow/SinkPin.h"
#include "unit/VxDSSource/stream/CanarySample.h"
#include "unit/VxDSSource/stream/RenegotiatingSink.h"

#include <amvideo.h>

namespace {

class VxDSSourceControlTest : public FilterFixture {
protected:
    using NumberGetter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(UINT*);
    using NumberSetter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(UINT);
    using TextGetter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(BSTR*);
    using TextSetter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(BSTR);

    UINT Read(NumberGetter getter)
    {
        UINT value = 0xDEADBEEF;
        EXPECT_EQ((Control().*getter)(&value), S_OK);
        return value;
    }

    std::wstring Read(TextGetter getter)
    {
        TestText value;
        EXPECT_EQ((Control().*getter)(value.Put()), S_OK);
        return value.Get();
    }
};

TEST_F(VxDSSourceControlTest, ReportsTheDefaults)
{
    EXPECT_EQ(Read(&IVxDSSource::GetRole), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetUnicastPort), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetMulticastAddress), L"239.192.1.1");
    EXPECT_EQ(Read(&IVxDSSource::GetMulticastPort), 1042u);
    EXPECT_EQ(Read(&IVxDSSource::GetDeviceId), L"");
    EXPECT_EQ(Read(&IVxDSSource::GetSourceCount), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetParamSource), L"");
    EXPECT_EQ(Read(&IVxDSSource::GetParamChannel), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetBufferCount), 16u);
    EXPECT_EQ(Read(&IVxDSSource::GetDefaultBufferSize), 4147200u);
    EXPECT_EQ(Read(&IVxDSSource::GetDropThreshold), 1u);
    EXPECT_EQ(Read(&IVxDSSource::GetWidth), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetHeight), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetParameterArray), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetOutputPixelType), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetKernelSize), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetZoomValue), 0u);
    EXPECT_EQ(Read(&IVxDSSource::GetDefaultSummary), L"");
    BOOL diagnostics = 7;
    EXPECT_EQ(Control().GetDiagnosticsEnabled(&diagnostics), S_OK);
    EXPECT_EQ(diagnostics, FALSE);
    UINT width = 7;
    UINT height = 7;
    EXPECT_EQ(Control().GetOutputSize(&width, &height), S_OK);
    EXPECT_EQ(width, 0u);
    EXPECT_EQ(height, 0u);
    BOOL available = 7;
    EXPECT_EQ(Control().IsParameterArrayAvailable(&available), S_OK);
    EXPECT_EQ(available, FALSE);
}

TEST_F(VxDSSourceControlTest, StoresEveryValueOfThePlainNumbers)
{
    struct Row {
        NumberSetter set;
        NumberGetter get;
    };
    for (const Row& row : {Row{&IVxDSSource::SetRole, &IVxDSSource::GetRole},
                           Row{&IVxDSSource::SetUnicastPort, &IVxDSSource::GetUnicastPort},
                           Row{&IVxDSSource::SetMulticastPort, &IVxDSSource::GetMulticastPort},
                           Row{&IVxDSSource::SetParamChannel, &IVxDSSource::GetParamChannel},
                           Row{&IVxDSSource::SetBufferCount, &IVxDSSource::GetBufferCount},
                           Row{&IVxDSSource::SetDefaultBufferSize, &IVxDSSource::GetDefaultBufferSize},
                           Row{&IVxDSSource::SetDropThreshold, &IVxDSSource::GetDropThreshold}}) {
        for (const UINT value : {0u, 1u, 65536u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
            EXPECT_EQ((Control().*row.set)(value), S_OK);
            EXPECT_EQ(Read(row.get), value);
        }
    }
    EXPECT_EQ(Done(), Lines{}) << "they store and do nothing else";
}

TEST_F(VxDSSourceControlTest, StoresEveryTextWithItsOwnLength)
{
    struct Row {
        TextSetter set;
        TextGetter get;
    };
    for (const Row& row : {Row{&IVxDSSource::SetDeviceId, &IVxDSSource::GetDeviceId},
                           Row{&IVxDSSource::SetParamSource, &IVxDSSource::GetParamSource},
                           Row{&IVxDSSource::SetMulticastAddress, &IVxDSSource::GetMulticastAddress}}) {
        EXPECT_EQ((Control().*row.set)(TestText(L"some text")), S_OK);
        EXPECT_EQ(Read(row.get), L"some text");

        BSTR withZero = ::SysAllocStringLen(L"a\0b", 3);
        EXPECT_EQ((Control().*row.set)(withZero), S_OK);
        ::SysFreeString(withZero);
        EXPECT_EQ(Read(row.get), std::wstring(L"a\0b", 3));

        EXPECT_EQ((Control().*row.set)(nullptr), S_OK);
        EXPECT_EQ(Read(row.get), L"") << "a null text reads as empty, and is given out as a new one";
    }
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSSourceControlTest, MakesEveryNonZeroDiagnosticsSwitchTrue)
{
    BOOL enabled = 7;
    EXPECT_EQ(Control().SetDiagnosticsEnabled(-5), S_OK);
    EXPECT_EQ(Control().GetDiagnosticsEnabled(&enabled), S_OK);
    EXPECT_EQ(enabled, 1);
    EXPECT_EQ(Control().SetDiagnosticsEnabled(0), S_OK);
    EXPECT_EQ(Control().GetDiagnosticsEnabled(&enabled), S_OK);
    EXPECT_EQ(enabled, 0);
}

TEST_F(VxDSSourceControlTest, AsksForACleanFrameOnceWhenDiagnosticsAreSwitchedOff)
{
    const auto isCleanUpRaised = [&](BOOL enabled) {
        EXPECT_EQ(Control().SetDiagnosticsEnabled(enabled), S_OK);
        return Pin().Statistics().IsClearPending();
    };

    EXPECT_FALSE(isCleanUpRaised(FALSE)) << "off to off";
    EXPECT_FALSE(isCleanUpRaised(TRUE));
    EXPECT_FALSE(isCleanUpRaised(TRUE)) << "on to on";
    EXPECT_TRUE(isCleanUpRaised(FALSE)) << "on to off";
}

TEST_F(VxDSSourceControlTest, RefusesKernelSizesOutsideTheThree)
{
    EXPECT_EQ(Control().SetKernelSize(3), S_OK);
    for (const INT size : {4, 1, 7, -1, 2}) {
        EXPECT_EQ(Control().SetKernelSize(size), E_INVALIDARG);
        EXPECT_EQ(Read(&IVxDSSource::GetKernelSize), 3u);
    }
    EXPECT_EQ(Control().SetKernelSize(0), S_OK);
    EXPECT_EQ(Control().SetKernelSize(5), S_OK);
    EXPECT_EQ(Read(&IVxDSSource::GetKernelSize), 5u);
}

TEST_F(VxDSSourceControlTest, StoresALargeZoomAsTenAndANegativeOneAsItIs)
{
    for (const INT zoom : {10, 11, 25, 0x7FFFFFFF}) {
        EXPECT_EQ(Control().SetZoomValue(zoom), S_OK);
        EXPECT_EQ(Read(&IVxDSSource::GetZoomValue), 10u) << zoom;
    }
    EXPECT_EQ(Control().SetZoomValue(9), S_OK);
    EXPECT_EQ(Read(&IVxDSSource::GetZoomValue), 9u);
    EXPECT_EQ(Control().SetZoomValue(-3), S_OK);
    EXPECT_EQ(static_cast<INT>(Read(&IVxDSSource::GetZoomValue)), -3);
}

TEST_F(VxDSSourceControlTest, RefusesAnOutputSizeBelowOne)
{
    EXPECT_EQ(Control().SetOutputSize(640, 480), S_OK);
    EXPECT_EQ(Control().SetOutputSize(0, 480), E_FAIL);
    EXPECT_EQ(Control().SetOutputSize(640, -1), E_FAIL);
    UINT width = 0;
    UINT height = 0;
    EXPECT_EQ(Control().GetOutputSize(&width, &height), S_OK);
    EXPECT_EQ(width, 640u);
    EXPECT_EQ(height, 480u);
    EXPECT_EQ(Control().SetOutputSize(1, 1), S_OK);
    EXPECT_EQ(Control().GetOutputSize(&width, &height), S_OK);
    EXPECT_EQ(width, 1u);
    EXPECT_EQ(height, 1u);
}

TEST_F(VxDSSourceControlTest, RenegotiatesTheMediaTypeWithTheOutputSize)
{
    Connect();
    RenegotiatingSink sink;
    VxComPtr<IPin> pin;
    ASSERT_EQ(Filter().FindPin(L"1", pin.Put()), S_OK);
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);

    EXPECT_EQ(Control().SetOutputSize(320, 200), S_OK);

    ASSERT_EQ(sink.renegotiated.size(), 1u);
    const auto& header = *reinterpret_cast<const VIDEOINFOHEADER*>(sink.renegotiated[0].Format());
    EXPECT_EQ(header.bmiHeader.biWidth, 320);
    EXPECT_EQ(header.bmiHeader.biHeight, 200);
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

TEST_F(VxDSSourceControlTest, DisconnectsWithEveryOutputPixelTypeThatIsTaken)
{
    Connect();
    EXPECT_EQ(Control().SetOutputPixelType(2), E_INVALIDARG);
    EXPECT_EQ(Control().SetOutputPixelType(0xFFFFFFFF), E_INVALIDARG);
    EXPECT_EQ(Done(), Lines{});

    EXPECT_EQ(Control().SetOutputPixelType(1), S_OK);
    EXPECT_EQ(Done().back(), "VxDevice::Free");
    EXPECT_EQ(Read(&IVxDSSource::GetOutputPixelType), 1u);
}

TEST_F(VxDSSourceControlTest, StaysDisconnectedWhenTheOutputPixelTypeIsSetWhileItStreams)
{
    Connect();
    SinkPin sink;
    VxComPtr<IPin> pin;
    ASSERT_EQ(Filter().FindPin(L"1", pin.Put()), S_OK);
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);
    ASSERT_EQ(Filter().Run(0), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor());

    EXPECT_EQ(Control().SetOutputPixelType(1), S_OK);

    EXPECT_EQ(TheCamera().liveDevices, 0);
    EXPECT_EQ(TheCamera().livePipelines, 0);
    EXPECT_TRUE(sink.samples.WaitFor(sink.samples.Count() + 2)) << "zero frames go on";
    EXPECT_EQ(Filter().Stop(), S_OK);
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

TEST_F(VxDSSourceControlTest, ConnectsAndDisconnects)
{
    EXPECT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
    EXPECT_EQ(Control().Connect(), S_OK);
    EXPECT_EQ(TheCamera().liveDevices, 1);
    EXPECT_EQ(Control().Disconnect(), S_OK);
    EXPECT_EQ(TheCamera().liveDevices, 0);
    EXPECT_EQ(Control().Disconnect(), S_OK) << "nothing to do is no failure";
}

TEST_F(VxDSSourceControlTest, ReportsSuccessOfAConnectThatFailed)
{
    TheCamera().connecting = VxError::NotFound;
    TheCamera().opening = VxError::NotFound;
    EXPECT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);

    EXPECT_EQ(Control().Connect(), S_OK);
}

TEST_F(VxDSSourceControlTest, WritesTheCamerasSize)
{
    EXPECT_EQ(Control().SetWidth(320), E_FAIL);
    EXPECT_EQ(Control().SetHeight(240), E_FAIL);
    Connect();

    EXPECT_EQ(Control().SetWidth(320), S_OK);
    EXPECT_EQ(Control().SetHeight(240), S_OK);

    EXPECT_EQ(Done(), (Lines{"device.Width = 320", "device.Height = 240"}));
    dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Width"))).writing = VxError::OutOfRange;
    EXPECT_EQ(Control().SetWidth(7), E_FAIL);
}

TEST_F(VxDSSourceControlTest, LeavesItToTheCameraWhichSizesItTakes)
{
    Connect();
    for (const INT pixels : {-1, 0, 0x7FFFFFFF}) {
        EXPECT_EQ(Control().SetWidth(pixels), S_OK);
        EXPECT_EQ(Control().SetHeight(pixels), S_OK);
    }
    EXPECT_EQ(Done(),
              (Lines{"device.Width = -1", "device.Height = -1", "device.Width = 0", "device.Height = 0",
                     "device.Width = 2147483647", "device.Height = 2147483647"}));

    for (const char* const name : {"Width", "Height"})
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString(name))).writing =
            VxError::OutOfRange;
    for (const INT pixels : {-1, 0, 0x7FFFFFFF}) {
        EXPECT_EQ(Control().SetWidth(pixels), E_FAIL);
        EXPECT_EQ(Control().SetHeight(pixels), E_FAIL);
    }
}

TEST_F(VxDSSourceControlTest, RenegotiatesTheMediaTypeWithTheCamerasSize)
{
    Connect();
    RenegotiatingSink sink;
    VxComPtr<IPin> pin;
    ASSERT_EQ(Filter().FindPin(L"1", pin.Put()), S_OK);
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);
    Pin().Settings().Store(vxds::Setting::OutputWidth, 0U); // the camera's, whatever it is
    Pin().Settings().Store(vxds::Setting::OutputHeight, 0U);

    EXPECT_EQ(Control().SetWidth(320), S_OK);

    ASSERT_EQ(sink.renegotiated.size(), 1u);
    const auto header = [&](std::size_t n) {
        return reinterpret_cast<const VIDEOINFOHEADER*>(sink.renegotiated[n].Format())->bmiHeader;
    };
    EXPECT_EQ(header(0).biWidth, 320);
    EXPECT_EQ(header(0).biHeight, 480);

    Pin().Settings().Store(vxds::Setting::OutputHeight, 0U);
    EXPECT_EQ(Control().SetHeight(240), S_OK);

    ASSERT_EQ(sink.renegotiated.size(), 2u);
    EXPECT_EQ(header(1).biWidth, 320);
    EXPECT_EQ(header(1).biHeight, 240);
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

TEST_F(VxDSSourceControlTest, FollowsTheCamerasSizeAfterItIsWritten)
{
    Connect();
    const auto isFollowedAfter = [&](HRESULT result) {
        const bool isFollowed = Pin().Settings().Number(vxds::Setting::Width) == 640;
        Pin().Settings().Store(vxds::Setting::Width, 1); // following takes it from the output size again
        return result == S_OK && isFollowed;
    };
    Pin().Settings().Store(vxds::Setting::Width, 1);

    EXPECT_TRUE(isFollowedAfter(Control().SetWidth(320)));
    EXPECT_TRUE(isFollowedAfter(Control().SetHeight(240)));

    dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Height"))).writing =
        VxError::NotWritable;
    EXPECT_EQ(Control().SetHeight(100), E_FAIL);
    EXPECT_EQ(Pin().Settings().Number(vxds::Setting::Width), 1u) << "nothing changed at the camera";
}

TEST_F(VxDSSourceControlTest, TellsTheSizeOfTheLastImage)
{
    Connect();
    TheCamera().QueuePicture({6, 4, 0x01080001, std::vector<std::uint8_t>(24), 0});
    TheCamera().QueuePicture({8, 2, 0x01080001, std::vector<std::uint8_t>(16), 0});
    CanarySample sample(1280 * 720 * 4);

    EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
    EXPECT_EQ(Read(&IVxDSSource::GetWidth), 6u);
    EXPECT_EQ(Read(&IVxDSSource::GetHeight), 4u);
    EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
    EXPECT_EQ(Read(&IVxDSSource::GetWidth), 8u);
    EXPECT_EQ(Read(&IVxDSSource::GetHeight), 2u);
    EXPECT_EQ(Pin().FillBuffer(&sample), S_OK) << "nothing arrived";
    EXPECT_EQ(Read(&IVxDSSource::GetWidth), 8u);
}

TEST_F(VxDSSourceControlTest, SavesAndClearsTheDefault)
{
    EXPECT_EQ(Control().ClearDefault(), 1) << "nothing was ever saved on this account";
    EXPECT_EQ(Control().SetRole(2), S_OK);
    EXPECT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);

    EXPECT_EQ(Control().SaveDefault(), 0);
    EXPECT_EQ(Read(&IVxDSSource::GetDefaultSummary), L"Multicasting from cam on group 239.192.1.1:1042");
    EXPECT_EQ(Control().ClearDefault(), 0);
    EXPECT_EQ(Read(&IVxDSSource::GetDefaultSummary), L"");
}

TEST_F(VxDSSourceControlTest, ReportsAFailedSaveAsASuccessCodeOfOne)
{
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              ::RegCreateKeyExW(HKEY_CURRENT_USER, L"SOFTWARE\\Vantrel Technologies Inc", 0, nullptr,
                                REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    ::RegCloseKey(key); // no key that lasts can be made below

    const HRESULT result = Control().SaveDefault();

    EXPECT_EQ(result, 1);
    EXPECT_TRUE(SUCCEEDED(result));
}

TEST_F(VxDSSourceControlTest, ThrowsNothingOut)
{
    TheCamera().onConnect = [] { throw std::bad_alloc(); };
    EXPECT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
    EXPECT_EQ(Control().Connect(), E_OUTOFMEMORY);

    TheCamera().onConnect = [] { throw 5; };
    EXPECT_EQ(Control().Connect(), E_FAIL);
    TheCamera().onConnect = nullptr;
    EXPECT_EQ(Control().Connect(), S_OK) << "the lock was let go";
    EXPECT_EQ(TheCamera().liveDevices, 1);
}

} // namespace
