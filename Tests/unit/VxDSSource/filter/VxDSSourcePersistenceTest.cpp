#include "VxDSSource/filter/SettingsTable.h"
#include "support/directshow/ScriptedStream.h"

#include "FilterFixture.h"

#include <algorithm>
#include <cstring>

namespace {

/// The filter in a saved graph.
class VxDSSourcePersistenceTest : public FilterFixture {
protected:
    static VxComPtr<IStream> NewStream(const std::vector<std::uint8_t>& bytes = {})
    {
        VxComPtr<IStream> stream;
        EXPECT_EQ(::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
        if (!bytes.empty()) {
            EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr), S_OK);
        }
        Rewind(stream);
        return stream;
    }

    static void Rewind(const VxComPtr<IStream>& stream)
    {
        EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    }

    static std::vector<std::uint8_t> BytesOf(const VxComPtr<IStream>& stream)
    {
        Rewind(stream);
        std::vector<std::uint8_t> bytes(100000);
        ULONG read = 0;
        EXPECT_TRUE(SUCCEEDED(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read)));
        bytes.resize(read);
        return bytes;
    }

    /// The version word as the framework writes it: eleven zeros and a blank, 2 bytes each.
    static std::vector<std::uint8_t> Version()
    {
        std::vector<std::uint8_t> bytes;
        for (int i = 0; i < 11; ++i)
            bytes.insert(bytes.end(), {'0', 0});
        bytes.insert(bytes.end(), {' ', 0});
        return bytes;
    }

    static void Append(std::vector<std::uint8_t>& bytes, std::uint32_t number)
    {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }

    /// A stream with a length and these bytes, which need not fit.
    static VxComPtr<IStream> Saved(std::uint32_t length, const std::string& text)
    {
        std::vector<std::uint8_t> bytes = Version();
        Append(bytes, length);
        bytes.insert(bytes.end(), text.begin(), text.end());
        return NewStream(bytes);
    }

    VxComPtr<IPersistStream> Persist() { return As<IPersistStream>(IID_IPersistStream); }

    UINT Zoom()
    {
        UINT zoom = 99;
        EXPECT_EQ(Control().GetZoomValue(&zoom), S_OK);
        return zoom;
    }
};

TEST_F(VxDSSourcePersistenceTest, WritesVersionLengthAndTextWithItsZero)
{
    const VxComPtr<IStream> stream = NewStream();

    EXPECT_EQ(Persist()->Save(stream.Get(), TRUE), S_OK);

    const std::string text =
        "double;text:role=0;text:unicastport=0;text:multicastip=239.192.1.1;text:multicastport=1042;"
        "text:diagnosticsenabled=false;text:deviceid=;text:paramsource=;text:paramchannel=0;text:buffercount="
        "16;"
        "text:defaultbuffersize=4147200;text:dropthreshold=1;text:width=1280;text:height=720;"
        "text:outputpixeltype=0;text:kernelsize=0;text:zoomvalue=0;text:outputwidth=0;text:outputheight=0";
    std::vector<std::uint8_t> expected = Version();
    Append(expected, static_cast<std::uint32_t>(text.size() + 1));
    expected.insert(expected.end(), text.begin(), text.end());
    expected.push_back(0);
    EXPECT_EQ(BytesOf(stream), expected);
}

TEST_F(VxDSSourcePersistenceTest, WritesCameraAndStreamBeforeTheSettings)
{
    Connect();
    const VxComPtr<IStream> stream = NewStream();

    EXPECT_EQ(Persist()->Save(stream.Get(), TRUE), S_OK);

    const std::vector<std::uint8_t> bytes = BytesOf(stream);
    const std::string text(bytes.begin() + 28, bytes.end()); // behind version and length
    EXPECT_TRUE(text.starts_with("double;device:;stream:;text:role=0;"));
    EXPECT_EQ(Done(), (Lines{"writer.Store(device, \"\")", "writer.Store(stream, \"\")"}));
}

TEST_F(VxDSSourcePersistenceTest, SavesWithoutAComplaintWhereTheTextDoesNotFit)
{
    for (const std::size_t room : {24u, 27u, 28u, 100u}) {
        ScriptedStream stream;
        stream.room = room;
        EXPECT_EQ(Persist()->Save(&stream, TRUE), S_OK) << room;
    }
    ScriptedStream full;
    full.room = 23;
    EXPECT_EQ(Persist()->Save(&full, TRUE), STG_E_MEDIUMFULL) << "not even the version";
}

TEST_F(VxDSSourcePersistenceTest, KeepsEverySettingThroughSaveAndLoad)
{
    std::uint32_t number = 0xFFFFFFFF;
    for (const vxds::SettingRow& row : vxds::kSettingRows) {
        if (row.type == vxds::SettingType::Text)
            Pin().Settings().Store(row.setting, L"caf\u00e9; a=1 % of " + std::to_wstring(number));
        else
            Pin().Settings().Store(row.setting, number--); // 4294967295 and what is below it
    }
    const VxComPtr<IStream> stream = NewStream();
    EXPECT_EQ(Persist()->Save(stream.Get(), TRUE), S_OK);
    DestroyFilter();
    Rewind(stream);

    EXPECT_EQ(Persist()->Load(stream.Get()), S_OK);

    number = 0xFFFFFFFF;
    const vxds::SettingsRecord& settings = Pin().Settings();
    for (const vxds::SettingRow& row : vxds::kSettingRows) {
        if (row.type == vxds::SettingType::Text) {
            EXPECT_EQ(settings.Text(row.setting), L"caf\u00e9; a=1 % of " + std::to_wstring(number))
                << row.key;
            continue;
        }
        const bool isBoolean = row.type == vxds::SettingType::Boolean;
        EXPECT_EQ(settings.Number(row.setting), isBoolean ? 1u : number) << row.key;
        --number;
    }
}

TEST_F(VxDSSourcePersistenceTest, LeavesASettingThatTheTextDoesNotHave)
{
    EXPECT_EQ(Control().SetKernelSize(5), S_OK);
    const std::string text = "double;text:zoomvalue=7";

    EXPECT_EQ(Persist()->Load(Saved(static_cast<std::uint32_t>(text.size() + 1), text + '\0').Get()), S_OK);

    UINT kernel = 0;
    EXPECT_EQ(Control().GetKernelSize(&kernel), S_OK);
    EXPECT_EQ(kernel, 5u);
    EXPECT_EQ(Zoom(), 7u);
}

TEST_F(VxDSSourcePersistenceTest, NamesItsLargestSize)
{
    ULARGE_INTEGER bytes{};
    EXPECT_EQ(Persist()->GetSizeMax(&bytes), S_OK);
    EXPECT_EQ(bytes.QuadPart, 131096u);
}

TEST_F(VxDSSourcePersistenceTest, LoadsWhatItSavedAndConnects)
{
    Connect();
    EXPECT_EQ(Control().SetZoomValue(7), S_OK);
    const VxComPtr<IStream> stream = NewStream();
    EXPECT_EQ(Persist()->Save(stream.Get(), TRUE), S_OK);
    DestroyFilter();
    TheCamera().log.Clear();
    Rewind(stream);

    EXPECT_EQ(Persist()->Load(stream.Get()), S_OK);

    EXPECT_EQ(Zoom(), 7u);
    EXPECT_EQ(Done().front(), "CreateAndConnect(cam)");
    EXPECT_EQ(TheCamera().restored, (Lines{"device", "stream"}));
}

TEST_F(VxDSSourcePersistenceTest, IgnoresALengthOfZero)
{
    EXPECT_EQ(Persist()->Load(Saved(0, "double;text:zoomvalue=7").Get()), S_OK);
    EXPECT_EQ(Zoom(), 0u);
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSSourcePersistenceTest, IgnoresATextThatEndsEarly)
{
    const std::string text = "double;text:zoomvalue=7";
    const auto length = static_cast<std::uint32_t>(text.size() + 1);

    EXPECT_EQ(Persist()->Load(Saved(length, text).Get()), S_OK) << "its zero is missing";
    EXPECT_EQ(Persist()->Load(Saved(0xFFFFFFFF, text + '\0').Get()), S_OK);
    EXPECT_EQ(Persist()->Load(Saved(length + 1, text + '\0').Get()), S_OK);

    EXPECT_EQ(Zoom(), 0u);
}

TEST_F(VxDSSourcePersistenceTest, IgnoresATextWhoseLastByteIsNotZero)
{
    const std::string text = "double;text:zoomvalue=7";

    EXPECT_EQ(Persist()->Load(Saved(static_cast<std::uint32_t>(text.size()), text).Get()), S_OK);

    EXPECT_EQ(Zoom(), 0u);
}

TEST_F(VxDSSourcePersistenceTest, IgnoresALengthThatEndsEarly)
{
    for (std::size_t bytes = 0; bytes < 4; ++bytes) {
        std::vector<std::uint8_t> saved = Version();
        saved.insert(saved.end(), bytes, 1);
        EXPECT_EQ(Persist()->Load(NewStream(saved).Get()), S_OK) << bytes;
    }
}

TEST_F(VxDSSourcePersistenceTest, IgnoresAStreamThatCannotBeRead)
{
    ScriptedStream saved;
    EXPECT_EQ(Persist()->Save(&saved, TRUE), S_OK);
    EXPECT_EQ(Control().SetZoomValue(7), S_OK);
    for (const std::size_t readable : {24u, 27u, 28u, 100u}) {
        saved.position = 0;
        saved.readable = readable;
        EXPECT_EQ(Persist()->Load(&saved), S_OK) << readable;
        EXPECT_EQ(Zoom(), 7u) << readable;
    }
    EXPECT_EQ(Done(), Lines{}) << "it did not even connect";
}

TEST_F(VxDSSourcePersistenceTest, IgnoresAStreamThatIsCutShortAnywhere)
{
    ScriptedStream saved;
    EXPECT_EQ(Persist()->Save(&saved, TRUE), S_OK);
    EXPECT_EQ(Control().SetZoomValue(7), S_OK);
    const std::vector<std::byte> whole = saved.bytes;
    for (const HRESULT atEnd : {S_OK, S_FALSE}) { // streams differ in this
        for (std::size_t bytes = 24; bytes < whole.size(); ++bytes) {
            saved.bytes.assign(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(bytes));
            saved.position = 0;
            saved.atEnd = atEnd;
            ASSERT_EQ(Persist()->Load(&saved), S_OK) << bytes;
            ASSERT_EQ(Zoom(), 7u) << bytes;
        }
    }
    saved.bytes = whole;
    saved.position = 0;
    EXPECT_EQ(Persist()->Load(&saved), S_OK);
    EXPECT_EQ(Zoom(), 0u) << "the whole is taken";
}

TEST_F(VxDSSourcePersistenceTest, LoadsATextUpToItsFirstZero)
{
    const std::string text = std::string("double;text:zoomvalue=7") + '\0' + "garbage" + '\0';

    EXPECT_EQ(Persist()->Load(Saved(static_cast<std::uint32_t>(text.size()), text).Get()), S_OK);

    EXPECT_EQ(Zoom(), 7u);
}

TEST_F(VxDSSourcePersistenceTest, LoadsALongText)
{
    std::string text = "double;text:unknown=" + std::string(200000, 'x') + ";text:zoomvalue=7";
    text += '\0';

    EXPECT_EQ(Persist()->Load(Saved(static_cast<std::uint32_t>(text.size()), text).Get()), S_OK);

    EXPECT_EQ(Zoom(), 7u);
}

} // namespace
