#include "BaseClasses/CPersistStream.h"

#include "support/directshow/ScriptedStream.h"

#include <vfwmsgs.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>

namespace {

constexpr HRESULT kOwnError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);

/// An object that stores what the test says. Its IUnknown is of no interest here.
class Storable final : public CPersistStream {
public:
    Storable() : CPersistStream(nullptr, nullptr) {}

    std::function<HRESULT(IStream*)> onWrite = [](IStream*) { return S_OK; };
    std::function<HRESULT(IStream*)> onRead = [](IStream*) { return S_OK; };
    DWORD version = 0;
    int sizeMax = 0;

    DWORD FileVersion() const { return mPS_dwFileVersion; }

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetClassID(CLSID*) override { return E_NOTIMPL; }
    DWORD GetSoftwareVersion() override { return version; }
    int SizeMax() override { return sizeMax; }
    HRESULT WriteToStream(IStream* s) override { return onWrite(s); }
    HRESULT ReadFromStream(IStream* s) override { return onRead(s); }
};

class CPersistStreamTest : public testing::Test {
protected:
    std::u16string Text() const
    {
        std::u16string text(stream.bytes.size() / sizeof(char16_t), u'\0');
        std::memcpy(text.data(), stream.bytes.data(), stream.bytes.size());
        return text;
    }
    void Put(const std::u16string& text)
    {
        stream.Write(text.data(), static_cast<ULONG>(text.size() * sizeof(char16_t)), nullptr);
    }

    ScriptedStream stream;
    Storable storable;
};

TEST_F(CPersistStreamTest, VersionTakes24Bytes)
{
    EXPECT_EQ(storable.Save(&stream, TRUE), S_OK);

    EXPECT_EQ(stream.bytes.size(), 24u);
    EXPECT_EQ(Text(), u"00000000000 ");
}

TEST_F(CPersistStreamTest, WritesTheVersionThenTheContent)
{
    storable.version = 42;
    storable.onWrite = [](IStream* s) { return s->Write("abc", 3, nullptr); };

    EXPECT_EQ(storable.Save(&stream, TRUE), S_OK);

    ASSERT_EQ(stream.bytes.size(), 27u);
    EXPECT_EQ(Text().substr(0, 12), u"00000000042 ");
    EXPECT_EQ(std::memcmp(stream.bytes.data() + 24, "abc", 3), 0);
}

TEST_F(CPersistStreamTest, SavedObjectIsCleanWhenAskedTo)
{
    EXPECT_EQ(storable.IsDirty(), S_FALSE);
    EXPECT_EQ(storable.SetDirty(TRUE), S_OK);
    EXPECT_EQ(storable.IsDirty(), S_OK);

    EXPECT_EQ(storable.Save(&stream, TRUE), S_OK);

    EXPECT_EQ(storable.IsDirty(), S_FALSE);
}

TEST_F(CPersistStreamTest, SaveWithoutClearingMakesACleanObjectDirty)
{
    EXPECT_EQ(storable.Save(&stream, FALSE), S_OK);

    EXPECT_EQ(storable.IsDirty(), S_OK);
}

TEST_F(CPersistStreamTest, FailedSaveLeavesTheFlag)
{
    storable.SetDirty(TRUE);
    storable.onWrite = [](IStream*) { return kOwnError; };
    EXPECT_EQ(storable.Save(&stream, TRUE), kOwnError);
    EXPECT_EQ(storable.IsDirty(), S_OK);

    stream.writing = STG_E_MEDIUMFULL;
    EXPECT_EQ(storable.Save(&stream, TRUE), STG_E_MEDIUMFULL);
    EXPECT_EQ(storable.IsDirty(), S_OK);
}

TEST_F(CPersistStreamTest, LoadsWhatItSaved)
{
    storable.version = 7;
    storable.onWrite = [](IStream* s) { return s->Write("abc", 3, nullptr); };
    ASSERT_EQ(storable.Save(&stream, TRUE), S_OK);
    storable.SetDirty(TRUE);
    std::string content(3, '\0');
    storable.onRead = [&](IStream* s) { return s->Read(content.data(), 3, nullptr); };

    EXPECT_EQ(storable.Load(&stream), S_OK);

    EXPECT_EQ(storable.FileVersion(), 7u);
    EXPECT_EQ(content, "abc");
    EXPECT_EQ(storable.IsDirty(), S_OK); // Load does not touch it
}

TEST_F(CPersistStreamTest, EveryVersionIsAccepted)
{
    storable.version = 0xFFFFFFFF;
    ASSERT_EQ(storable.Save(&stream, TRUE), S_OK);
    EXPECT_EQ(Text(), u"-0000000001 ");

    EXPECT_EQ(storable.Load(&stream), S_OK);

    EXPECT_EQ(storable.FileVersion(), 0xFFFFFFFFu);
}

TEST_F(CPersistStreamTest, TruncatedStreamIsRefusedAtEveryLength)
{
    ASSERT_EQ(storable.Save(&stream, TRUE), S_OK);
    const auto whole = stream.bytes;
    storable.onRead = [](IStream*) -> HRESULT { throw std::logic_error("must not be read"); };

    for (const HRESULT atEnd : {S_OK, S_FALSE}) {
        for (std::size_t length = 0; length < whole.size(); ++length) {
            stream.bytes.assign(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            stream.position = 0;
            stream.atEnd = atEnd;
            EXPECT_EQ(storable.Load(&stream), VFW_E_INVALID_FILE_FORMAT) << length;
            EXPECT_EQ(storable.FileVersion(), 0u);
        }
    }
}

TEST_F(CPersistStreamTest, GarbageIsRefused)
{
    Put(u"0000000x000 ");

    EXPECT_EQ(storable.Load(&stream), VFW_E_INVALID_FILE_FORMAT);
}

TEST_F(CPersistStreamTest, FailuresOfTheStreamPassUnchanged)
{
    stream.reading = STG_E_ACCESSDENIED;

    EXPECT_EQ(storable.Load(&stream), STG_E_ACCESSDENIED);
}

TEST_F(CPersistStreamTest, ResultOfReadingTheContentIsReturned)
{
    ASSERT_EQ(storable.Save(&stream, TRUE), S_OK);
    storable.onRead = [](IStream*) { return kOwnError; };

    EXPECT_EQ(storable.Load(&stream), kOwnError);
}

TEST_F(CPersistStreamTest, SizeIncludesTheVersion)
{
    ULARGE_INTEGER bytes = {};
    EXPECT_EQ(storable.GetSizeMax(&bytes), S_OK);
    EXPECT_EQ(bytes.QuadPart, 24u);

    storable.sizeMax = 131072;
    EXPECT_EQ(storable.GetSizeMax(&bytes), S_OK);
    EXPECT_EQ(bytes.QuadPart, 131096u);
}

TEST_F(CPersistStreamTest, RefusesNullPointers)
{
    EXPECT_EQ(storable.GetSizeMax(nullptr), E_POINTER);
    EXPECT_EQ(storable.Load(nullptr), E_POINTER);
    EXPECT_EQ(storable.Save(nullptr, TRUE), E_POINTER);
}

TEST_F(CPersistStreamTest, ExceptionsBecomeFailures)
{
    storable.onWrite = [](IStream*) -> HRESULT { throw std::runtime_error("by the test"); };
    EXPECT_EQ(storable.Save(&stream, TRUE), E_UNEXPECTED);
    storable.onRead = [](IStream*) -> HRESULT { throw std::bad_alloc(); };
    EXPECT_EQ(storable.Load(&stream), E_OUTOFMEMORY);
}

} // namespace
