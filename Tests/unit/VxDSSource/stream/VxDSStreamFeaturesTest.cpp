#include "CanarySample.h"
#include "PinFixture.h"

#include <thread>

namespace {

/// The features of the connected camera.
class VxDSStreamFeaturesTest : public PinFixture {
protected:
    VxDSStreamFeaturesTest()
    {
        ConnectAndForget();
        EXPECT_EQ(Pin().SetFeatureSelector(1), S_OK);
    }

    static ScriptedFeatures& Device() { return *TheCamera().device; }

    std::wstring m_text = L"untouched";
    UINT m_number = 77;
};

TEST_F(VxDSStreamFeaturesTest, SelectsThreeArraysAndNoOther)
{
    EXPECT_EQ(Pin().SetFeatureSelector(0), S_OK);
    EXPECT_EQ(Pin().SetFeatureSelector(2), S_OK);
    EXPECT_EQ(Pin().SetFeatureSelector(3), E_FAIL);
    EXPECT_EQ(Pin().SetFeatureSelector(0xFFFFFFFF), E_FAIL);
    EXPECT_EQ(Pin().FeatureSelector(), 2u);
}

TEST_F(VxDSStreamFeaturesTest, HasTheArraysOfWhatIsThere)
{
    TheCamera().communication->AddInteger("Timeout", 1);
    for (const UINT selector : {0u, 1u, 2u}) {
        ASSERT_EQ(Pin().SetFeatureSelector(selector), S_OK);
        EXPECT_TRUE(Pin().AreFeaturesAvailable()) << selector;
        EXPECT_EQ(Pin().GetFeatureCount(m_number), S_OK);
        EXPECT_EQ(m_number, (std::vector<UINT>{1, 4, 1})[selector]);
    }
}

TEST_F(VxDSStreamFeaturesTest, KeepsTheLinksFeaturesOfACameraThatIsGone)
{
    TheCamera().isConnected = false;

    EXPECT_EQ(Pin().GetFeatureCount(m_number), E_UNEXPECTED);
    EXPECT_FALSE(Pin().AreFeaturesAvailable());
    ASSERT_EQ(Pin().SetFeatureSelector(0), S_OK);
    EXPECT_EQ(Pin().GetFeatureCount(m_number), S_OK);
    EXPECT_TRUE(Pin().AreFeaturesAvailable());
}

TEST_F(VxDSStreamFeaturesTest, AnswersEveryQuestionUnexpectedWithoutALink)
{
    Pin().CloseConnection();
    bool a = false;
    for (const UINT selector : {0u, 1u, 2u}) {
        ASSERT_EQ(Pin().SetFeatureSelector(selector), S_OK);
        EXPECT_FALSE(Pin().AreFeaturesAvailable());
        EXPECT_EQ(Pin().GetFeatureCount(m_number), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetFeatureName(0, m_text), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetFeatureCategory(L"Width", m_text), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetFeatureValue(L"Width", m_text), E_UNEXPECTED);
        EXPECT_EQ(Pin().SetFeatureValue(L"Width", L"1", m_text), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetFeatureType(L"Width", m_text), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetFeatureAccess(L"Width", a, a, a), E_UNEXPECTED);
        EXPECT_EQ(Pin().ExecuteFeature(L"AcquisitionStart", m_text), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetEnumEntryCount(L"Width", m_number), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetEnumEntryName(L"Width", 0, m_text), E_UNEXPECTED);
        EXPECT_EQ(Pin().GetFeatureVisibility(L"Width", m_number), E_UNEXPECTED);
    }
    EXPECT_EQ(m_text, L"untouched");
}

TEST_F(VxDSStreamFeaturesTest, AnswersUnknownNamesAsInvalid)
{
    bool a = false;
    EXPECT_EQ(Pin().GetFeatureName(4, m_text), E_INVALIDARG);
    EXPECT_EQ(Pin().GetFeatureCategory(L"width", m_text), E_INVALIDARG);
    EXPECT_EQ(Pin().GetFeatureValue(L"width", m_text), E_INVALIDARG);
    EXPECT_EQ(Pin().SetFeatureValue(L"width", L"1", m_text), E_INVALIDARG);
    EXPECT_EQ(Pin().GetFeatureType(L"width", m_text), E_INVALIDARG);
    EXPECT_EQ(Pin().GetFeatureAccess(L"width", a, a, a), E_INVALIDARG);
    EXPECT_EQ(Pin().ExecuteFeature(L"width", m_text), E_INVALIDARG);
    EXPECT_EQ(Pin().GetFeatureVisibility(L"width", m_number), E_INVALIDARG);
    EXPECT_EQ(m_text, L"untouched");

    EXPECT_EQ(Pin().GetEnumEntryCount(L"width", m_number), S_OK);
    EXPECT_EQ(m_number, 0u);
    EXPECT_EQ(Pin().GetEnumEntryName(L"width", 0, m_text), E_UNEXPECTED);
}

TEST_F(VxDSStreamFeaturesTest, ReadsNameCategoryValueAndVisibility)
{
    auto& feature = Device().AddInteger("Gain", 12);
    feature.category = "Root\\AnalogControl";
    feature.visibility = VxGenVisibility::Guru;

    EXPECT_EQ(Pin().GetFeatureName(4, m_text), S_OK);
    EXPECT_EQ(m_text, L"Gain");
    EXPECT_EQ(Pin().GetFeatureCategory(L"Gain", m_text), S_OK);
    EXPECT_EQ(m_text, L"Root\\AnalogControl");
    EXPECT_EQ(Pin().GetFeatureValue(L"Gain", m_text), S_OK);
    EXPECT_EQ(m_text, L"12");
    EXPECT_EQ(Pin().GetFeatureVisibility(L"Gain", m_number), S_OK);
    EXPECT_EQ(m_number, 2u);
}

TEST_F(VxDSStreamFeaturesTest, FailsWhenAValueCannotBeRead)
{
    Device().AddInteger("Gain", 12).reading = VxError::NotReadable;

    EXPECT_EQ(Pin().GetFeatureValue(L"Gain", m_text), E_FAIL);
    EXPECT_EQ(m_text, L"untouched");
}

TEST_F(VxDSStreamFeaturesTest, NamesTheSevenTypes)
{
    Device().Add<ScriptedFloat>("Float");
    Device().Add<ScriptedString>("String");
    Device().Add<ScriptedBoolean>("Boolean");
    Device().AddEnum("Enum", {"A"});
    Device().Add<ScriptedRegister>("Register");
    for (const auto& [feature, name] : {std::pair{L"Width", L"Integer"},
                                        {L"Float", L"Float"},
                                        {L"String", L"String"},
                                        {L"Boolean", L"Boolean"},
                                        {L"Enum", L"Enum"},
                                        {L"AcquisitionStart", L"Command"},
                                        {L"Register", L"Register"}}) {
        EXPECT_EQ(Pin().GetFeatureType(feature, m_text), S_OK);
        EXPECT_EQ(m_text, name);
    }
}

TEST_F(VxDSStreamFeaturesTest, FailsForATypeThatCannotBeToldAndIsSurprisedByAnotherOne)
{
    Device().AddInteger("Untold", 1).tellingType = VxError::NotSupported;
    Device().Add<ScriptedNode>("Node");

    EXPECT_EQ(Pin().GetFeatureType(L"Untold", m_text), E_FAIL);
    EXPECT_EQ(Pin().GetFeatureType(L"Node", m_text), E_UNEXPECTED);
    EXPECT_EQ(m_text, L"untouched");
}

TEST_F(VxDSStreamFeaturesTest, ReadsTheThreeAccessFlags)
{
    auto& feature = Device().AddInteger("Gain", 1);
    feature.isReadable = false;
    bool isAvailable = false;
    bool isReadable = true;
    bool isWritable = false;

    EXPECT_EQ(Pin().GetFeatureAccess(L"Gain", isAvailable, isReadable, isWritable), S_OK);

    EXPECT_TRUE(isAvailable);
    EXPECT_FALSE(isReadable);
    EXPECT_TRUE(isWritable);
}

TEST_F(VxDSStreamFeaturesTest, WritesAValueFromText)
{
    auto& feature = Device().AddInteger("Gain", 1);

    EXPECT_EQ(Pin().SetFeatureValue(L"Gain", L"42", m_text), S_OK);

    EXPECT_EQ(feature.value, 42);
    EXPECT_EQ(m_text, L"untouched");
}

TEST_F(VxDSStreamFeaturesTest, TellsWhyAValueWasRefused)
{
    Device().AddInteger("Gain", 1).writing = VxResult(VxError::OutOfRange, "Gain must be 0 to 10");

    EXPECT_EQ(Pin().SetFeatureValue(L"Gain", L"42", m_text), E_FAIL);
    EXPECT_EQ(m_text, L"Gain must be 0 to 10");
}

TEST_F(VxDSStreamFeaturesTest, RebuildsTheSizeAfterTheThreeFeaturesThatChangeIt)
{
    Device().Add<ScriptedBoolean>("Interlaced");
    Device().AddInteger("width", 5);
    ASSERT_TRUE(Settings().SetOutputSize(100, 100));
    const auto isRebuiltBy = [&](const wchar_t* feature, const wchar_t* value) {
        Store(vxds::Setting::Width, 1); // a rebuild takes it from the output size again
        EXPECT_EQ(Pin().SetFeatureValue(feature, value, m_text), S_OK);
        return Settings().Number(vxds::Setting::Width) == 100;
    };

    EXPECT_TRUE(isRebuiltBy(L"Width", L"320"));
    EXPECT_TRUE(isRebuiltBy(L"Height", L"200"));
    EXPECT_TRUE(isRebuiltBy(L"Interlaced", L"true"));
    EXPECT_FALSE(isRebuiltBy(L"width", L"320"));
}

TEST_F(VxDSStreamFeaturesTest, DoesNotRebuildTheSizeWhenTheWriteFailed)
{
    dynamic_cast<ScriptedInteger*>(Device().Get(VxString("Width")))->writing = VxError::NotWritable;
    Store(vxds::Setting::Width, 1);

    EXPECT_EQ(Pin().SetFeatureValue(L"Width", L"320", m_text), E_FAIL);

    EXPECT_EQ(Settings().Number(vxds::Setting::Width), 1u);
}

TEST_F(VxDSStreamFeaturesTest, ExecutesCommandsOnly)
{
    EXPECT_EQ(Pin().ExecuteFeature(L"AcquisitionStart", m_text), S_OK);
    EXPECT_EQ(Done(), Lines{"device.AcquisitionStart()"});

    EXPECT_EQ(Pin().ExecuteFeature(L"Width", m_text), E_INVALIDARG);
    EXPECT_EQ(m_text, L"untouched");

    Device().Add<ScriptedCommand>("Trigger").writing = VxResult(VxError::Busy, "not armed");
    EXPECT_EQ(Pin().ExecuteFeature(L"Trigger", m_text), E_FAIL);
    EXPECT_EQ(m_text, L"not armed");
}

TEST_F(VxDSStreamFeaturesTest, ListsTheEntriesOfAnEnumeration)
{
    Device().AddEnum("PixelFormat", {"Mono8", "BayerRG8"});

    EXPECT_EQ(Pin().GetEnumEntryCount(L"PixelFormat", m_number), S_OK);
    EXPECT_EQ(m_number, 2u);
    EXPECT_EQ(Pin().GetEnumEntryName(L"PixelFormat", 1, m_text), S_OK);
    EXPECT_EQ(m_text, L"BayerRG8");
    EXPECT_EQ(Pin().GetEnumEntryName(L"PixelFormat", 2, m_text), E_INVALIDARG);
}

TEST_F(VxDSStreamFeaturesTest, GivesABooleanTwoEntries)
{
    Device().Add<ScriptedBoolean>("ReverseX");

    EXPECT_EQ(Pin().GetEnumEntryCount(L"ReverseX", m_number), S_OK);
    EXPECT_EQ(m_number, 2u);
    EXPECT_EQ(Pin().GetEnumEntryName(L"ReverseX", 0, m_text), S_OK);
    EXPECT_EQ(m_text, L"true");
    EXPECT_EQ(Pin().GetEnumEntryName(L"ReverseX", 1, m_text), S_OK);
    EXPECT_EQ(m_text, L"false");
    EXPECT_EQ(Pin().GetEnumEntryName(L"ReverseX", 2, m_text), E_INVALIDARG);
}

TEST_F(VxDSStreamFeaturesTest, GivesOtherTypesNoEntries)
{
    EXPECT_EQ(Pin().GetEnumEntryCount(L"Width", m_number), S_OK);
    EXPECT_EQ(m_number, 0u);
    EXPECT_EQ(Pin().GetEnumEntryName(L"Width", 0, m_text), E_UNEXPECTED);
}

TEST_F(VxDSStreamFeaturesTest, ListsTheCamerasSources)
{
    EXPECT_EQ(Pin().SourceCount(), 0u);
    EXPECT_EQ(Pin().GetSourceName(0, m_text), S_OK);
    EXPECT_EQ(m_text, L"");

    Device().AddEnum("SourceSelector", {"Left", "Right"});
    EXPECT_EQ(Pin().SourceCount(), 2u);
    EXPECT_EQ(Pin().GetSourceName(1, m_text), S_OK);
    EXPECT_EQ(m_text, L"Right");
    EXPECT_EQ(Pin().GetSourceName(2, m_text), E_INVALIDARG);

    Pin().CloseConnection();
    EXPECT_EQ(Pin().SourceCount(), 0u);
    EXPECT_EQ(Pin().GetSourceName(1, m_text), S_OK);
    EXPECT_EQ(m_text, L"");
}

TEST_F(VxDSStreamFeaturesTest, NeedsNotTheFrameInProduction)
{
    // The streaming thread waits for a frame and holds the acquisition mutex; features can be read all the
    // same.
    TheCamera().onRetrieve = [&] {
        std::wstring value;
        std::thread other([&] { EXPECT_EQ(Pin().GetFeatureValue(L"Width", value), S_OK); });
        other.join();
        EXPECT_EQ(value, L"640");
    };
    CanarySample sample(16);

    EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
}

} // namespace
