#include "FilterFixture.h"

#include <functional>

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
    EXPECT_EQ(Control().SetZoomValue(25), S_OK);
    EXPECT_EQ(Read(&IVxDSSource::GetZoomValue), 10u);
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

TEST_F(VxDSSourceControlTest, SelectsAParameterArray)
{
    EXPECT_EQ(Control().SetParameterArray(2), S_OK);
    EXPECT_EQ(Control().SetParameterArray(3), E_FAIL);
    EXPECT_EQ(Read(&IVxDSSource::GetParameterArray), 2u);
}

TEST_F(VxDSSourceControlTest, TellsWhetherTheSelectedArrayIsThere)
{
    Connect();
    TheCamera().isConnected = false;
    for (const auto& [selector, isThere] : {std::pair{0u, TRUE}, {1u, FALSE}, {2u, TRUE}}) {
        EXPECT_EQ(Control().SetParameterArray(selector), S_OK);
        BOOL available = 7;
        EXPECT_EQ(Control().IsParameterArrayAvailable(&available), S_OK);
        EXPECT_EQ(available, isThere) << selector;
    }
}

TEST_F(VxDSSourceControlTest, CountsParametersOfAnArrayThatIsThere)
{
    UINT count = 7;
    EXPECT_EQ(Control().GetParameterCount(&count), E_UNEXPECTED);
    Connect();
    EXPECT_EQ(Control().SetParameterArray(1), S_OK);
    EXPECT_EQ(Control().GetParameterCount(&count), S_OK);
    EXPECT_EQ(count, 4u);
    TheCamera().isConnected = false;
    EXPECT_EQ(Control().GetParameterCount(&count), E_UNEXPECTED);
    EXPECT_EQ(Control().SetParameterArray(0), S_OK);
    EXPECT_EQ(Control().GetParameterCount(&count), S_OK);
    EXPECT_EQ(count, 0u);
}

TEST_F(VxDSSourceControlTest, ReadsAParameterByName)
{
    TheCamera().device->AddInteger("Gain", 12).visibility = VxGenVisibility::Expert;
    Connect();
    EXPECT_EQ(Control().SetParameterArray(1), S_OK);
    const TestText gain(L"Gain");
    TestText text;
    UINT number = 0;
    BOOL flags[3] = {7, 7, 7};

    EXPECT_EQ(Control().GetParameterName(4, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"Gain");
    EXPECT_EQ(Control().GetParameterCategory(gain, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"Root");
    EXPECT_EQ(Control().GetParameterValue(gain, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"12");
    EXPECT_EQ(Control().GetParameterType(gain, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"Integer");
    EXPECT_EQ(Control().GetParameterVisibility(gain, &number), S_OK);
    EXPECT_EQ(number, 1u);
    EXPECT_EQ(Control().GetParameterAccess(gain, &flags[0], &flags[1], &flags[2]), S_OK);
    EXPECT_EQ(flags[0], 1);
    EXPECT_EQ(flags[1], 1);
    EXPECT_EQ(flags[2], 1);
}

TEST_F(VxDSSourceControlTest, LeavesOutputsAloneWhenItFails)
{
    Connect();
    EXPECT_EQ(Control().SetParameterArray(1), S_OK);
    const TestText unknown(L"Nothing");
    BSTR untouched = nullptr;
    BOOL flags[3] = {7, 7, 7};

    EXPECT_EQ(Control().GetParameterName(99, &untouched), E_INVALIDARG);
    EXPECT_EQ(Control().GetParameterCategory(unknown, &untouched), E_INVALIDARG);
    EXPECT_EQ(Control().GetParameterValue(unknown, &untouched), E_INVALIDARG);
    EXPECT_EQ(Control().GetParameterType(unknown, &untouched), E_INVALIDARG);
    EXPECT_EQ(Control().SetParameterValue(unknown, unknown, &untouched), E_INVALIDARG);
    EXPECT_EQ(Control().ExecuteCommand(unknown, &untouched), E_INVALIDARG);
    EXPECT_EQ(Control().GetEnumEntryName(unknown, 0, &untouched), E_UNEXPECTED);
    EXPECT_EQ(untouched, nullptr);
    EXPECT_EQ(Control().GetParameterAccess(unknown, &flags[0], &flags[1], &flags[2]), E_INVALIDARG);
    EXPECT_EQ(flags[0], 7);
}

TEST_F(VxDSSourceControlTest, GivesAReasonOnlyWhenThereIsOne)
{
    auto& gain = TheCamera().device->AddInteger("Gain", 12);
    Connect();
    EXPECT_EQ(Control().SetParameterArray(1), S_OK);
    const TestText name(L"Gain");
    TestText reason;

    EXPECT_EQ(Control().SetParameterValue(name, TestText(L"3"), reason.Put()), S_OK);
    EXPECT_TRUE(reason.IsNull());
    EXPECT_EQ(gain.value, 3);

    gain.writing = VxResult(VxError::OutOfRange, "Gain must be 0 to 10");
    EXPECT_EQ(Control().SetParameterValue(name, TestText(L"99"), reason.Put()), E_FAIL);
    EXPECT_EQ(reason.Get(), L"Gain must be 0 to 10");

    gain.writing = VxResult(VxError::Failed);
    EXPECT_EQ(Control().SetParameterValue(name, TestText(L"99"), reason.Put()), E_FAIL);
    EXPECT_TRUE(reason.IsNull());
}

TEST_F(VxDSSourceControlTest, RunsACommand)
{
    Connect();
    EXPECT_EQ(Control().SetParameterArray(1), S_OK);
    TestText reason;

    EXPECT_EQ(Control().ExecuteCommand(TestText(L"AcquisitionStop"), reason.Put()), S_OK);
    EXPECT_EQ(Done(), Lines{"device.AcquisitionStop()"});
    EXPECT_EQ(Control().ExecuteCommand(TestText(L"Width"), reason.Put()), E_INVALIDARG);

    dynamic_cast<ScriptedCommand&>(*TheCamera().device->Get(VxString("AcquisitionStop"))).writing =
        VxResult(VxError::Busy, "the camera is busy");
    EXPECT_EQ(Control().ExecuteCommand(TestText(L"AcquisitionStop"), reason.Put()), E_FAIL);
    EXPECT_EQ(reason.Get(), L"the camera is busy");
}

TEST_F(VxDSSourceControlTest, ListsEntriesAndSources)
{
    TheCamera().device->AddEnum("SourceSelector", {"Left", "Right"});
    Connect();
    EXPECT_EQ(Control().SetParameterArray(1), S_OK);
    const TestText name(L"SourceSelector");
    TestText text;
    UINT count = 0;

    EXPECT_EQ(Control().GetEnumEntryCount(name, &count), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(Control().GetEnumEntryName(name, 1, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"Right");
    EXPECT_EQ(Control().GetEnumEntryName(name, 2, text.Put()), E_INVALIDARG);

    EXPECT_EQ(Read(&IVxDSSource::GetSourceCount), 2u);
    EXPECT_EQ(Control().GetSourceName(0, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"Left");
    EXPECT_EQ(Control().GetSourceName(2, text.Put()), E_INVALIDARG);
}

TEST_F(VxDSSourceControlTest, NamesNoSourceWithoutACamera)
{
    TestText text;
    EXPECT_EQ(Control().GetSourceName(5, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"");
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
    EXPECT_TRUE(FAILED(Control().Connect()));
    TheCamera().onConnect = nullptr;
    EXPECT_EQ(Control().Connect(), S_OK) << "the lock was let go";
    EXPECT_EQ(TheCamera().liveDevices, 1);
}

} // namespace
