#include "BaseClasses/StreamIntegers.h"

#include "support/directshow/ScriptedStream.h"

#include <vfwmsgs.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

namespace {

class StreamIntegersTest : public testing::Test {
protected:
    std::u16string Written(int number)
    {
        stream.bytes.clear();
        EXPECT_EQ(WriteInt(&stream, number), S_OK);
        std::u16string text(stream.bytes.size() / sizeof(char16_t), u'\0');
        std::memcpy(text.data(), stream.bytes.data(), stream.bytes.size());
        return text;
    }
    int Read(const std::u16string& text)
    {
        stream.bytes.resize(text.size() * sizeof(char16_t));
        std::memcpy(stream.bytes.data(), text.data(), stream.bytes.size());
        stream.position = 0;
        hr = E_PENDING;
        return ReadInt(&stream, hr);
    }

    ScriptedStream stream;
    HRESULT hr = E_PENDING;
};

TEST_F(StreamIntegersTest, WritesElevenCharactersAndABlank)
{
    EXPECT_EQ(Written(0), u"00000000000 ");
    EXPECT_EQ(Written(1), u"00000000001 ");
    EXPECT_EQ(Written(-1), u"-0000000001 ");
    EXPECT_EQ(Written(INT_MAX), u"02147483647 ");
    EXPECT_EQ(Written(INT_MIN), u"-2147483648 ");
}

TEST_F(StreamIntegersTest, ReadsWhatItWrote)
{
    for (const int number : {0, 1, -1, 42, 123456789, INT_MAX, INT_MIN}) {
        EXPECT_EQ(Read(Written(number)), number);
        EXPECT_EQ(hr, S_OK);
    }
}

TEST_F(StreamIntegersTest, EndsAtEverySeparator)
{
    for (const char16_t separator : {u' ', u'\t', u'\r', u'\n', u'\0'}) {
        EXPECT_EQ(Read(std::u16string(u"12") + separator + u"34 "), 12);
        EXPECT_EQ(hr, S_OK);
        EXPECT_EQ(stream.position, 3 * sizeof(char16_t)); // the separator is consumed
    }
}

TEST_F(StreamIntegersTest, RefusesEverythingElse)
{
    for (const char16_t* const text : {u"x ", u"1x ", u"1-2 ", u"--1 ", u"+1 ", u"1.0 ", u"\x0661 "}) {
        EXPECT_EQ(Read(text), 0);
        EXPECT_EQ(hr, VFW_E_INVALID_FILE_FORMAT);
    }
}

TEST_F(StreamIntegersTest, StreamThatEndsInsideTheNumberIsRefused)
{
    for (const HRESULT atEnd : {S_OK, S_FALSE}) {
        stream.atEnd = atEnd;
        EXPECT_EQ(Read(u""), 0);
        EXPECT_EQ(hr, VFW_E_INVALID_FILE_FORMAT);
        EXPECT_EQ(Read(u"123"), 0);
        EXPECT_EQ(hr, VFW_E_INVALID_FILE_FORMAT);
    }
}

TEST_F(StreamIntegersTest, TooManyDigitsEndNevertheless)
{
    Read(std::u16string(100000, u'9') + u" ");

    EXPECT_EQ(hr, S_OK);
}

TEST_F(StreamIntegersTest, FailuresOfTheStreamPassUnchanged)
{
    stream.reading = STG_E_ACCESSDENIED;
    EXPECT_EQ(Read(u"1 "), 0);
    EXPECT_EQ(hr, STG_E_ACCESSDENIED);
    stream.writing = STG_E_MEDIUMFULL;
    EXPECT_EQ(WriteInt(&stream, 1), STG_E_MEDIUMFULL);
}

} // namespace
