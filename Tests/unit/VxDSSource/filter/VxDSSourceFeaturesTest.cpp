// The methods on features: from GetSourceCount and GetParameterArray to GetParameterVisibility.

#include "FilterFixture.h"
#include "support/directshow/SinkPin.h"
#include "unit/VxDSSource/stream/RenegotiatingSink.h"

#include <amvideo.h>

#include <array>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

class VxDSSourceFeaturesTest : public FilterFixture {
protected:
    /// Connects and selects the camera's own features.
    void ConnectToFeatures()
    {
        Connect();
        EXPECT_EQ(Control().SetParameterArray(1), S_OK);
    }

    static ScriptedFeatures& Device() { return *TheCamera().device; }

    UINT SourceCount()
    {
        UINT count = 0xDEADBEEF;
        EXPECT_EQ(Control().GetSourceCount(&count), S_OK);
        return count;
    }

    std::wstring TypeOf(const wchar_t* name)
    {
        TestText type;
        EXPECT_EQ(Control().GetParameterType(TestText(name), type.Put()), S_OK);
        return type.Get();
    }
};

TEST_F(VxDSSourceFeaturesTest, SelectsAParameterArray)
{
    EXPECT_EQ(Control().SetParameterArray(2), S_OK);
    EXPECT_EQ(Control().SetParameterArray(3), E_FAIL);
    EXPECT_EQ(Control().SetParameterArray(0xFFFFFFFF), E_FAIL);
    UINT selector = 7;
    EXPECT_EQ(Control().GetParameterArray(&selector), S_OK);
    EXPECT_EQ(selector, 2u);
}

TEST_F(VxDSSourceFeaturesTest, TellsWhetherTheSelectedArrayIsThere)
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

TEST_F(VxDSSourceFeaturesTest, CountsParametersOfAnArrayThatIsThere)
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

TEST_F(VxDSSourceFeaturesTest, ReadsAParameterByName)
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

TEST_F(VxDSSourceFeaturesTest, LeavesOutputsAloneWhenItFails)
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

TEST_F(VxDSSourceFeaturesTest, GivesAReasonOnlyWhenThereIsOne)
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

TEST_F(VxDSSourceFeaturesTest, RunsACommand)
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

TEST_F(VxDSSourceFeaturesTest, WritesTheReasonOfAFailedCommandAlwaysAndOnlyThen)
{
    auto& trigger = Device().Add<ScriptedCommand>("Trigger");
    ConnectToFeatures();
    const TestText name(L"Trigger");
    TestText reason;

    EXPECT_EQ(Control().ExecuteCommand(name, reason.Put()), S_OK);
    EXPECT_TRUE(reason.IsNull());
    EXPECT_EQ(Control().ExecuteCommand(TestText(L"Nothing"), reason.Put()), E_INVALIDARG);
    EXPECT_TRUE(reason.IsNull());

    trigger.writing = VxResult(VxError::Busy, "not armed");
    EXPECT_EQ(Control().ExecuteCommand(name, reason.Put()), E_FAIL);
    EXPECT_EQ(reason.Get(), L"not armed");

    trigger.writing = VxResult(VxError::Failed);
    EXPECT_EQ(Control().ExecuteCommand(name, reason.Put()), E_FAIL);
    EXPECT_FALSE(reason.IsNull());
    EXPECT_EQ(reason.Get(), L"") << "the camera gave none";

    trigger.onWrite = [] { throw std::runtime_error("gone"); };
    EXPECT_EQ(Control().ExecuteCommand(name, reason.Put()), E_FAIL);
    EXPECT_FALSE(reason.IsNull());
}

TEST_F(VxDSSourceFeaturesTest, ListsEntriesAndSources)
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

    EXPECT_EQ(SourceCount(), 2u);
    EXPECT_EQ(Control().GetSourceName(0, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"Left");
    EXPECT_EQ(Control().GetSourceName(2, text.Put()), E_INVALIDARG);
    EXPECT_EQ(Control().GetSourceName(0xFFFFFFFF, text.Put()), E_INVALIDARG);
    EXPECT_EQ(Control().GetEnumEntryName(name, 0xFFFFFFFF, text.Put()), E_INVALIDARG);
    EXPECT_TRUE(text.IsNull());
}

TEST_F(VxDSSourceFeaturesTest, NamesNoSourceWithoutACamera)
{
    TestText text;
    EXPECT_EQ(Control().GetSourceName(5, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"");
}

TEST_F(VxDSSourceFeaturesTest, NamesNoSourceOfACameraWithoutSources)
{
    ConnectToFeatures();
    TestText text;

    EXPECT_EQ(SourceCount(), 0u);
    EXPECT_EQ(Control().GetSourceName(0, text.Put()), S_OK);
    EXPECT_FALSE(text.IsNull());
    EXPECT_EQ(text.Get(), L"");
}

TEST_F(VxDSSourceFeaturesTest, AnswerUnexpectedWithoutTheSelectedArrayAndLeaveOutputsAlone)
{
    const TestText name(L"Width");
    BSTR text = nullptr;
    UINT number = 77;
    std::array<BOOL, 3> flags = {7, 7, 7};
    for (const UINT selector : {0u, 1u, 2u}) {
        ASSERT_EQ(Control().SetParameterArray(selector), S_OK);
        EXPECT_EQ(Control().GetParameterCount(&number), E_UNEXPECTED);
        EXPECT_EQ(Control().GetParameterName(0, &text), E_UNEXPECTED);
        EXPECT_EQ(Control().GetParameterCategory(name, &text), E_UNEXPECTED);
        EXPECT_EQ(Control().GetParameterValue(name, &text), E_UNEXPECTED);
        EXPECT_EQ(Control().SetParameterValue(name, name, &text), E_UNEXPECTED);
        EXPECT_EQ(Control().GetParameterType(name, &text), E_UNEXPECTED);
        EXPECT_EQ(Control().GetParameterAccess(name, &flags[0], &flags[1], &flags[2]), E_UNEXPECTED);
        EXPECT_EQ(Control().ExecuteCommand(name, &text), E_UNEXPECTED);
        EXPECT_EQ(Control().GetEnumEntryCount(name, &number), E_UNEXPECTED);
        EXPECT_EQ(Control().GetEnumEntryName(name, 0, &text), E_UNEXPECTED);
        EXPECT_EQ(Control().GetParameterVisibility(name, &number), E_UNEXPECTED);
    }
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(number, 77u);
    EXPECT_EQ(flags, (std::array<BOOL, 3>{7, 7, 7}));
}

TEST_F(VxDSSourceFeaturesTest, NameTheFirstAndTheLastParameterAndNoneBehindIt)
{
    ConnectToFeatures();
    TestText text;

    EXPECT_EQ(Control().GetParameterName(0, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"Width");
    EXPECT_EQ(Control().GetParameterName(3, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"AcquisitionStop");
    EXPECT_EQ(Control().GetParameterName(4, text.Put()), E_INVALIDARG);
    EXPECT_EQ(Control().GetParameterName(0xFFFFFFFF, text.Put()), E_INVALIDARG);
    EXPECT_TRUE(text.IsNull());
}

TEST_F(VxDSSourceFeaturesTest, GiveEmptyTextsAsNewOnes)
{
    Device().Add<ScriptedString>("DeviceUserID").category = "";
    ConnectToFeatures();
    TestText text;

    EXPECT_EQ(Control().GetParameterValue(TestText(L"DeviceUserID"), text.Put()), S_OK);
    EXPECT_FALSE(text.IsNull());
    EXPECT_EQ(Control().GetParameterCategory(TestText(L"DeviceUserID"), text.Put()), S_OK);
    EXPECT_FALSE(text.IsNull());
}

TEST_F(VxDSSourceFeaturesTest, NameTheSevenTypesAndNoOther)
{
    Device().AddEnum("AnEnum", {"A"});
    Device().Add<ScriptedBoolean>("ABoolean");
    Device().Add<ScriptedString>("AString");
    Device().Add<ScriptedFloat>("AFloat");
    Device().Add<ScriptedRegister>("ARegister");
    Device().AddInteger("Untold", 1).tellingType = VxError::NotSupported;
    Device().Add<ScriptedNode>("ANode");
    ConnectToFeatures();

    EXPECT_EQ(TypeOf(L"Width"), L"Integer");
    EXPECT_EQ(TypeOf(L"AnEnum"), L"Enum");
    EXPECT_EQ(TypeOf(L"ABoolean"), L"Boolean");
    EXPECT_EQ(TypeOf(L"AString"), L"String");
    EXPECT_EQ(TypeOf(L"AcquisitionStart"), L"Command");
    EXPECT_EQ(TypeOf(L"AFloat"), L"Float");
    EXPECT_EQ(TypeOf(L"ARegister"), L"Register");
    TestText type;
    EXPECT_EQ(Control().GetParameterType(TestText(L"Untold"), type.Put()), E_FAIL);
    EXPECT_EQ(Control().GetParameterType(TestText(L"ANode"), type.Put()), E_UNEXPECTED);
    EXPECT_TRUE(type.IsNull());
}

TEST_F(VxDSSourceFeaturesTest, FailWhenAValueCannotBeRead)
{
    Device().AddInteger("Gain", 1).reading = VxError::NotReadable;
    ConnectToFeatures();
    TestText text;

    EXPECT_EQ(Control().GetParameterValue(TestText(L"Gain"), text.Put()), E_FAIL);
    EXPECT_TRUE(text.IsNull());
}

TEST_F(VxDSSourceFeaturesTest, TellEachAccessFlagByItself)
{
    auto& gain = Device().AddInteger("Gain", 1);
    ConnectToFeatures();
    for (int only = 0; only < 3; ++only) {
        gain.isAvailable = only == 0;
        gain.isReadable = only == 1;
        gain.isWritable = only == 2;
        std::array<BOOL, 3> flags = {7, 7, 7};
        EXPECT_EQ(Control().GetParameterAccess(TestText(L"Gain"), &flags[0], &flags[1], &flags[2]), S_OK);
        EXPECT_EQ(flags, (std::array<BOOL, 3>{only == 0, only == 1, only == 2}));
    }
}

TEST_F(VxDSSourceFeaturesTest, GiveABooleanTheEntriesTrueAndFalse)
{
    Device().Add<ScriptedBoolean>("ReverseX");
    ConnectToFeatures();
    const TestText name(L"ReverseX");
    UINT count = 0;
    TestText text;

    EXPECT_EQ(Control().GetEnumEntryCount(name, &count), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(Control().GetEnumEntryName(name, 0, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"true");
    EXPECT_EQ(Control().GetEnumEntryName(name, 1, text.Put()), S_OK);
    EXPECT_EQ(text.Get(), L"false");
    EXPECT_EQ(Control().GetEnumEntryName(name, 2, text.Put()), E_INVALIDARG);
    EXPECT_EQ(Control().GetEnumEntryName(name, 0xFFFFFFFF, text.Put()), E_INVALIDARG);
}

TEST_F(VxDSSourceFeaturesTest, GiveOtherTypesAndUnknownNamesNoEntries)
{
    ConnectToFeatures();
    for (const wchar_t* name : {L"Width", L"AcquisitionStart", L"Nothing"}) {
        UINT count = 7;
        TestText text;
        EXPECT_EQ(Control().GetEnumEntryCount(TestText(name), &count), S_OK);
        EXPECT_EQ(count, 0u);
        EXPECT_EQ(Control().GetEnumEntryName(TestText(name), 0, text.Put()), E_UNEXPECTED);
        EXPECT_TRUE(text.IsNull());
    }
}

TEST_F(VxDSSourceFeaturesTest, TellTheFourLevelsOfVisibility)
{
    auto& gain = Device().AddInteger("Gain", 1);
    ConnectToFeatures();
    UINT level = 77;
    for (const UINT expected : {0u, 1u, 2u, 3u}) {
        gain.visibility = static_cast<VxGenVisibility>(expected);
        EXPECT_EQ(Control().GetParameterVisibility(TestText(L"Gain"), &level), S_OK);
        EXPECT_EQ(level, expected);
    }
    EXPECT_EQ(Control().GetParameterVisibility(TestText(L"Nothing"), &level), E_INVALIDARG);
    EXPECT_EQ(level, 3u);
}

TEST_F(VxDSSourceFeaturesTest, TakeANullTextForAnEmptyOne)
{
    auto& name = Device().Add<ScriptedString>("DeviceUserID");
    name.value = "before";
    ConnectToFeatures();
    TestText reason;

    EXPECT_EQ(Control().SetParameterValue(TestText(L"DeviceUserID"), nullptr, reason.Put()), S_OK);
    EXPECT_EQ(name.value.Narrow(), "");
    EXPECT_EQ(Control().SetParameterValue(nullptr, nullptr, reason.Put()), E_INVALIDARG);
}

TEST_F(VxDSSourceFeaturesTest, TakeANameWithItsOwnLength)
{
    ConnectToFeatures();
    BSTR longer = ::SysAllocStringLen(L"Width\0", 6); // with a zero at its end
    TestText value;

    EXPECT_EQ(Control().GetParameterValue(longer, value.Put()), E_INVALIDARG);
    ::SysFreeString(longer);
}

TEST_F(VxDSSourceFeaturesTest, FollowTheCamerasSizeAfterTheThreeNamesThatChangeIt)
{
    Device().Add<ScriptedBoolean>("Interlaced");
    Device().AddInteger("width", 5);
    ConnectToFeatures();
    const auto isFollowedAfter = [&](const wchar_t* name, const wchar_t* value) {
        Pin().Settings().Store(vxds::Setting::Width, 1); // following takes it from the output size again
        TestText reason;
        EXPECT_EQ(Control().SetParameterValue(TestText(name), TestText(value), reason.Put()), S_OK);
        return Pin().Settings().Number(vxds::Setting::Width) == 640;
    };

    EXPECT_TRUE(isFollowedAfter(L"Width", L"320"));
    EXPECT_TRUE(isFollowedAfter(L"Height", L"240"));
    EXPECT_TRUE(isFollowedAfter(L"Interlaced", L"true"));
    EXPECT_FALSE(isFollowedAfter(L"width", L"6"));
}

TEST_F(VxDSSourceFeaturesTest, RenegotiateAfterTheThreeNamesThatChangeTheCamerasSize)
{
    Device().Add<ScriptedBoolean>("Interlaced").onWrite = [] { // its pictures are half as high then
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Height"))).value = 120;
    };
    Device().AddInteger("width", 5);
    ConnectToFeatures();
    RenegotiatingSink sink;
    VxComPtr<IPin> pin;
    ASSERT_EQ(Filter().FindPin(L"1", pin.Put()), S_OK);
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);
    using Sizes = std::vector<std::pair<LONG, LONG>>;
    const auto offeredAfter = [&](const wchar_t* name, const wchar_t* value) {
        sink.renegotiated.clear();
        Pin().Settings().Store(vxds::Setting::OutputWidth, 0U); // the camera's, whatever it is
        Pin().Settings().Store(vxds::Setting::OutputHeight, 0U);
        TestText reason;
        EXPECT_EQ(Control().SetParameterValue(TestText(name), TestText(value), reason.Put()), S_OK);
        Sizes sizes;
        for (const CMediaType& type : sink.renegotiated) {
            const auto& header = reinterpret_cast<const VIDEOINFOHEADER*>(type.Format())->bmiHeader;
            sizes.emplace_back(header.biWidth, header.biHeight);
        }
        return sizes;
    };

    EXPECT_EQ(offeredAfter(L"Width", L"320"), (Sizes{{320, 480}}));
    EXPECT_EQ(offeredAfter(L"Height", L"240"), (Sizes{{320, 240}}));
    EXPECT_EQ(offeredAfter(L"Interlaced", L"true"), (Sizes{{320, 120}}));
    dynamic_cast<ScriptedInteger&>(*Device().Get(VxString("Width"))).value = 160; // nobody says so
    EXPECT_EQ(offeredAfter(L"width", L"6"), Sizes{});
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

} // namespace
