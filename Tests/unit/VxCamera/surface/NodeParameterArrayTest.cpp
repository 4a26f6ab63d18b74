#include "VxCamera/surface/NodeParameterArray.h"

#include "support/genapi/NodeMapFixture.h"

#include <gmock/gmock.h>

#include <thread>

#include "VxDSSource/camera/VxGenBoolean.h"
#include "VxDSSource/camera/VxGenCommand.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenFloat.h"
#include "VxDSSource/camera/VxGenInteger.h"
#include "VxDSSource/camera/VxGenRegister.h"
#include "VxDSSource/camera/VxGenString.h"

namespace {

/// One feature of each type in two categories.
class NodeParameterArrayTest : public testing::Test {
protected:
    NodeParameterArrayTest()
    {
        auto map = genapi::NodeMap::Load(
            Describe(
                "<Category Name=\"Root\"><pFeature>Image</pFeature><pFeature>Top</pFeature></Category>"
                "<Category "
                "Name=\"Image\"><pFeature>Width</pFeature><pFeature>Gain</pFeature><pFeature>Flip</pFeature>"
                "<pFeature>Mode</pFeature><pFeature>Name</pFeature><pFeature>Start</"
                "pFeature><pFeature>Table</pFeature>"
                "</Category>"
                "<Integer Name=\"Top\"><Value>1</Value><Visibility>Guru</Visibility></Integer>"
                "<Integer "
                "Name=\"Width\"><Value>640</Value><Min>16</Min><Max>1024</Max><Inc>8</Inc><Unit>px</Unit>"
                "<Visibility>Expert</Visibility></Integer>"
                "<Float Name=\"Gain\"><Value>0.5</Value><Min>0</Min><Max>2</Max><Unit>dB</Unit></Float>"
                "<Boolean Name=\"Flip\"><Value>false</Value></Boolean>"
                "<Enumeration Name=\"Mode\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
                "<EnumEntry Name=\"On\"><Value>5</Value><pIsAvailable>Top</pIsAvailable></EnumEntry>"
                "<Value>0</Value></Enumeration>"
                "<String Name=\"Name\"><Value>cam</Value></String>"
                "<Command Name=\"Start\"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>"
                "<IntReg "
                "Name=\"StartReg\"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode></IntReg>"
                "<Register "
                "Name=\"Table\"><Address>4</Address><Length>2</Length><AccessMode>RW</AccessMode></Register>"
                "<Integer Name=\"Hidden\"><Value>3</Value></Integer>"),
            port);
        array = NodeParameterArray::Create(*std::move(map));
    }

    template <typename T>
    [[nodiscard]] T& Get(const char* name) const
    {
        auto* const parameter = dynamic_cast<T*>(array->Get(VxString(name)));
        if (parameter == nullptr)
            throw std::runtime_error(name);
        return *parameter;
    }

    [[nodiscard]] VxGenType TypeOf(const char* name) const
    {
        VxGenType type = VxGenType::Unknown;
        EXPECT_TRUE(Get<VxGenParameter>(name).GetType(type).IsOK());
        return type;
    }

    FakeRegisterPort port;
    std::unique_ptr<NodeParameterArray> array;
};

TEST_F(NodeParameterArrayTest, NumbersTellTheirUnits)
{
    VxString width;
    VxString gain;
    VxString none("as before");

    EXPECT_TRUE(Get<VxGenInteger>("Width").GetUnit(width).IsOK());
    EXPECT_TRUE(Get<VxGenFloat>("Gain").GetUnit(gain).IsOK());
    EXPECT_TRUE(Get<VxGenInteger>("Top").GetUnit(none).IsOK());

    EXPECT_EQ(width.Narrow(), "px");
    EXPECT_EQ(gain.Narrow(), "dB");
    EXPECT_EQ(none.Narrow(), "");
}

TEST_F(NodeParameterArrayTest, ListsFeaturesInTheOrderOfTheTree)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < array->GetCount(); ++i)
        names.push_back(array->Get(i)->GetName().Narrow());

    EXPECT_THAT(names,
                testing::ElementsAre("Width", "Gain", "Flip", "Mode", "Name", "Start", "Table", "Top"));
    EXPECT_EQ(array->Get(array->GetCount()), nullptr);
}

TEST_F(NodeParameterArrayTest, NamesTheCategory)
{
    EXPECT_EQ(Get<VxGenParameter>("Width").GetCategory().Narrow(), "root\\Image");
    EXPECT_EQ(Get<VxGenParameter>("Top").GetCategory().Narrow(), "root");
    EXPECT_EQ(Get<VxGenParameter>("Hidden").GetCategory().Narrow(), "");
}

TEST_F(NodeParameterArrayTest, FindsEveryNodeByNameOnce)
{
    EXPECT_EQ(array->Get(VxString("Width")), array->Get(0));
    EXPECT_NE(array->Get(VxString("Hidden")), nullptr);
    EXPECT_EQ(array->Get(VxString("Hidden")), array->Get(VxString("Hidden")));
    EXPECT_EQ(array->Get(VxString("width")), nullptr);
    EXPECT_EQ(array->Get(VxString()), nullptr);
}

TEST_F(NodeParameterArrayTest, TellsTheTypeOfEachFeature)
{
    EXPECT_EQ(TypeOf("Width"), VxGenType::Integer);
    EXPECT_EQ(TypeOf("Gain"), VxGenType::Float);
    EXPECT_EQ(TypeOf("Flip"), VxGenType::Boolean);
    EXPECT_EQ(TypeOf("Mode"), VxGenType::Enum);
    EXPECT_EQ(TypeOf("Name"), VxGenType::String);
    EXPECT_EQ(TypeOf("Start"), VxGenType::Command);
    EXPECT_EQ(TypeOf("Table"), VxGenType::Register);
    EXPECT_EQ(TypeOf("Root"), VxGenType::Unknown);
}

TEST_F(NodeParameterArrayTest, TellsTheVisibility)
{
    VxGenVisibility visibility = VxGenVisibility::Invisible;

    ASSERT_TRUE(Get<VxGenParameter>("Top").GetVisibility(visibility).IsOK());
    EXPECT_EQ(visibility, VxGenVisibility::Guru);
    ASSERT_TRUE(Get<VxGenParameter>("Width").GetVisibility(visibility).IsOK());
    EXPECT_EQ(visibility, VxGenVisibility::Expert);
}

TEST_F(NodeParameterArrayTest, ReadsAndWritesIntegers)
{
    auto& width = Get<VxGenInteger>("Width");
    std::int64_t value = 0;

    EXPECT_TRUE(width.GetValue(value).IsOK());
    EXPECT_EQ(value, 640);
    EXPECT_TRUE(width.GetMin(value).IsOK());
    EXPECT_EQ(value, 16);
    EXPECT_TRUE(width.GetMax(value).IsOK());
    EXPECT_EQ(value, 1024);
    EXPECT_TRUE(width.GetIncrement(value).IsOK());
    EXPECT_EQ(value, 8);
    EXPECT_TRUE(width.SetValue(648).IsOK());
    EXPECT_EQ(width.SetValue(650).Code(), VxError::OutOfRange);
}

TEST_F(NodeParameterArrayTest, ReadsAndWritesFloats)
{
    auto& gain = Get<VxGenFloat>("Gain");
    double value = 0;

    EXPECT_TRUE(gain.GetValue(value).IsOK());
    EXPECT_EQ(value, 0.5);
    EXPECT_TRUE(gain.GetMin(value).IsOK());
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(gain.GetMax(value).IsOK());
    EXPECT_EQ(value, 2);
    EXPECT_TRUE(gain.SetValue(1.5).IsOK());
    EXPECT_EQ(gain.SetValue(3).Code(), VxError::OutOfRange);
}

TEST_F(NodeParameterArrayTest, ReadsAndWritesTruthValues)
{
    auto& flip = Get<VxGenBoolean>("Flip");
    bool value = true;

    EXPECT_TRUE(flip.GetValue(value).IsOK());
    EXPECT_FALSE(value);
    EXPECT_TRUE(flip.SetValue(true).IsOK());
    EXPECT_TRUE(flip.GetValue(value).IsOK());
    EXPECT_TRUE(value);
}

TEST_F(NodeParameterArrayTest, ReadsAndWritesEnumerations)
{
    auto& mode = Get<VxGenEnum>("Mode");
    VxString name;
    std::int64_t count = 0;
    const VxGenEnumEntry* entry = nullptr;

    EXPECT_TRUE(mode.GetEntriesCount(count).IsOK());
    EXPECT_EQ(count, 2);
    ASSERT_TRUE(mode.GetEntryByIndex(1, &entry).IsOK());
    EXPECT_TRUE(entry->GetName(name).IsOK());
    EXPECT_EQ(name.Narrow(), "On");
    std::int64_t value = 0;
    EXPECT_TRUE(entry->GetValue(value).IsOK());
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(entry->IsAvailable());
    EXPECT_TRUE(mode.SetValue(VxString("On")).IsOK());
    EXPECT_TRUE(mode.GetValue(name).IsOK());
    EXPECT_EQ(name.Narrow(), "On");
    EXPECT_EQ(mode.SetValue(VxString("Up")).Code(), VxError::InvalidData);

    ASSERT_TRUE(array->SetIntegerValue(VxString("Top"), 0).IsOK());
    EXPECT_FALSE(entry->IsAvailable());
}

TEST_F(NodeParameterArrayTest, RefusesEntriesThatAreNotThere)
{
    auto& mode = Get<VxGenEnum>("Mode");
    const VxGenEnumEntry* entry = nullptr;

    EXPECT_EQ(mode.GetEntryByIndex(2, &entry).Code(), VxError::OutOfRange);
    EXPECT_EQ(mode.GetEntryByIndex(-1, &entry).Code(), VxError::OutOfRange);
    EXPECT_EQ(mode.GetEntryByIndex(0, nullptr).Code(), VxError::InvalidParameter);
    EXPECT_EQ(entry, nullptr);
}

TEST_F(NodeParameterArrayTest, ReadsAndWritesTexts)
{
    auto& name = Get<VxGenString>("Name");
    VxString value;

    EXPECT_TRUE(name.SetValue(VxString(L"Kamera \u00FC")).IsOK());
    EXPECT_TRUE(name.GetValue(value).IsOK());
    EXPECT_EQ(value.Wide(), L"Kamera \u00FC");
}

TEST_F(NodeParameterArrayTest, ExecutesCommands)
{
    auto& start = Get<VxGenCommand>("Start");
    bool isDone = true;

    EXPECT_TRUE(start.Execute().IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{1}));
    EXPECT_TRUE(start.IsDone(isDone).IsOK());
    EXPECT_FALSE(isDone);
}

TEST_F(NodeParameterArrayTest, ReadsAndWritesRegisters)
{
    auto& table = Get<VxGenRegister>("Table");
    std::vector<std::byte> bytes;

    EXPECT_TRUE(table.SetValue(std::vector{std::byte{1}, std::byte{2}}).IsOK());
    EXPECT_TRUE(table.GetValue(bytes).IsOK());
    EXPECT_EQ(bytes, (std::vector{std::byte{1}, std::byte{2}}));
}

TEST_F(NodeParameterArrayTest, LeavesOutValuesUntouchedOnFailure)
{
    port.failure = VxResult(VxError::Timeout, "silence");
    std::vector<std::byte> bytes{std::byte{9}};
    VxString text("before");
    bool isDone = true;

    EXPECT_EQ(Get<VxGenRegister>("Table").GetValue(bytes).Code(), VxError::Timeout);
    EXPECT_EQ(Get<VxGenParameter>("Table").ToString(text).Code(), VxError::Timeout);
    EXPECT_EQ(Get<VxGenCommand>("Start").IsDone(isDone).Code(), VxError::Timeout);
    EXPECT_EQ(bytes.size(), 1u);
    EXPECT_EQ(text.Narrow(), "before");
    EXPECT_TRUE(isDone);
}

TEST_F(NodeParameterArrayTest, ReadsAndWritesTextForms)
{
    VxString text;

    EXPECT_TRUE(Get<VxGenParameter>("Gain").FromString(VxString("1.25")).IsOK());
    EXPECT_TRUE(Get<VxGenParameter>("Gain").ToString(text).IsOK());
    EXPECT_EQ(text.Narrow(), "1.25");
    EXPECT_EQ(Get<VxGenParameter>("Gain").FromString(VxString("much")).Code(), VxError::InvalidData);
}

TEST_F(NodeParameterArrayTest, TellsAccess)
{
    EXPECT_TRUE(Get<VxGenParameter>("Start").IsAvailable());
    EXPECT_FALSE(Get<VxGenParameter>("Start").IsReadable());
    EXPECT_TRUE(Get<VxGenParameter>("Start").IsWritable());
    EXPECT_TRUE(Get<VxGenParameter>("Width").IsReadable());
}

TEST_F(NodeParameterArrayTest, HasTypedLookUps)
{
    EXPECT_NE(array->GetInteger(VxString("Width")), nullptr);
    EXPECT_EQ(array->GetInteger(VxString("Gain")), nullptr);
    EXPECT_EQ(array->GetInteger(VxString("Gone")), nullptr);
    EXPECT_NE(array->GetEnum(VxString("Mode")), nullptr);
    EXPECT_EQ(array->GetEnum(VxString("Width")), nullptr);
    EXPECT_NE(array->GetCommand(VxString("Start")), nullptr);
    EXPECT_EQ(array->GetCommand(VxString("Mode")), nullptr);
}

TEST_F(NodeParameterArrayTest, HasShortForms)
{
    std::int64_t integer = 0;
    double number = 0;
    VxString text;

    EXPECT_TRUE(array->SetIntegerValue(VxString("Width"), 32).IsOK());
    EXPECT_TRUE(array->GetIntegerValue(VxString("Width"), integer).IsOK());
    EXPECT_EQ(integer, 32);
    EXPECT_TRUE(array->GetFloatValue(VxString("Gain"), number).IsOK());
    EXPECT_EQ(number, 0.5);
    EXPECT_TRUE(array->GetEnumValue(VxString("Mode"), text).IsOK());
    EXPECT_EQ(text.Narrow(), "Off");
    EXPECT_TRUE(array->ExecuteCommand(VxString("Start")).IsOK());
}

TEST_F(NodeParameterArrayTest, SaysWhyAShortFormFails)
{
    std::int64_t integer = 0;
    double number = 0;
    VxString text;

    EXPECT_EQ(array->GetIntegerValue(VxString("Gone"), integer).Code(), VxError::NotFound);
    EXPECT_EQ(array->GetIntegerValue(VxString("Gone"), integer).GetDescription().Narrow(),
              "Gone: there is no feature of this name");
    EXPECT_EQ(array->SetIntegerValue(VxString("Gain"), 1).Code(), VxError::TypeMismatch);
    EXPECT_EQ(array->SetIntegerValue(VxString("Gain"), 1).GetDescription().Narrow(),
              "Gain: it is no integer");
    EXPECT_EQ(array->SetIntegerValue(VxString("Width"), 17).Code(), VxError::OutOfRange);
    EXPECT_EQ(array->GetFloatValue(VxString("Width"), number).Code(), VxError::TypeMismatch);
    EXPECT_EQ(array->GetEnumValue(VxString("Width"), text).Code(), VxError::TypeMismatch);
    EXPECT_EQ(array->ExecuteCommand(VxString("Width")).Code(), VxError::TypeMismatch);
    EXPECT_EQ(array->ExecuteCommand(VxString("Gone")).Code(), VxError::NotFound);
}

TEST_F(NodeParameterArrayTest, IsEmptyWithoutAMap)
{
    const auto none = NodeParameterArray::Create(nullptr);

    EXPECT_EQ(none->GetCount(), 0u);
    EXPECT_EQ(none->Get(0), nullptr);
    EXPECT_EQ(none->Get(VxString("Width")), nullptr);
}

TEST_F(NodeParameterArrayTest, ListsFeaturesOfChunksAsNotAvailableAndSaysWhy)
{
    array = NodeParameterArray::Create(*genapi::NodeMap::Load(
        Describe("<Category Name=\"Root\"><pFeature>ChunkDataControl</pFeature></Category>"
                 "<Category Name=\"ChunkDataControl\"><pFeature>ChunkModeActive</pFeature>"
                 "<pFeature>ChunkGain</pFeature></Category>"
                 "<Boolean Name=\"ChunkModeActive\"><Value>0</Value></Boolean>"
                 "<Integer Name=\"ChunkGain\"><pValue>ChunkGainReg</pValue></Integer>"
                 "<IntReg Name=\"ChunkGainReg\"><Address>0</Address><Length>4</Length>"
                 "<AccessMode>RO</AccessMode><pPort>GainPort</pPort></IntReg>"
                 "<Port Name=\"GainPort\"><ChunkID>0Aef</ChunkID></Port>"),
        port));

    EXPECT_TRUE(Get<VxGenBoolean>("ChunkModeActive").FromString("true").IsOK());
    const VxGenParameter& gain = Get<VxGenInteger>("ChunkGain");
    EXPECT_EQ(array->GetCount(), 2u);
    EXPECT_EQ(gain.GetCategory(), "root\\ChunkDataControl");
    EXPECT_FALSE(gain.IsAvailable());
    EXPECT_FALSE(gain.IsReadable());
    EXPECT_FALSE(gain.IsWritable());
    VxString text;
    const VxResult read = gain.ToString(text);
    EXPECT_EQ(read.Code(), VxError::NotAvailable);
    EXPECT_THAT(read.GetDescription().Narrow(), testing::HasSubstr("comes with the data of an image"));
}

TEST_F(NodeParameterArrayTest, ServesSeveralThreads)
{
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([this, number] {
            for (int i = 0; i < 200; ++i) {
                for (const char* name :
                     {"Width", "Gain", "Flip", "Mode", "Name", "Table", "Hidden", "StartReg"}) {
                    VxGenParameter* const parameter = array->Get(VxString(name));
                    ASSERT_NE(parameter, nullptr);
                    VxString text;
                    ASSERT_TRUE(parameter->ToString(text).IsOK());
                    std::ignore = parameter->FromString(text);
                    std::ignore = parameter->IsWritable();
                }
                std::ignore = array->SetIntegerValue("Width", 16 + 8 * ((i + number) % 100));
            }
        });
    for (std::thread& thread : threads)
        thread.join();

    ASSERT_TRUE(array->SetIntegerValue("Width", 640).IsOK());
    std::int64_t width = 0;
    ASSERT_TRUE(array->GetIntegerValue("Width", width).IsOK());
    EXPECT_EQ(width, 640);
}

TEST_F(NodeParameterArrayTest, KeepsCharactersBeyondTheBasicPlane)
{
    const std::wstring text =
        VxString("T\xC3\xBCr \xF0\x9D\x84\x9E").Wide(); // a letter of two bytes, one of four

    ASSERT_TRUE(Get<VxGenString>("Name").SetValue(VxString(text)).IsOK());

    VxString value;
    ASSERT_TRUE(Get<VxGenString>("Name").GetValue(value).IsOK());
    EXPECT_EQ(value.Wide(), text);
    EXPECT_EQ(value.Narrow(), "T\xC3\xBCr \xF0\x9D\x84\x9E");
}

} // namespace
