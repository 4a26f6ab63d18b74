#include "VxCamera/surface/ConfigurationText.h"

#include <gmock/gmock.h>

#include <random>

#include "VxBase/VxString.h"

namespace surface {
namespace {

Configuration WithText(const VxString& value)
{
    Configuration configuration;
    configuration.texts.push_back({"name", value});
    return configuration;
}

std::string RoundTrip(const std::string& value)
{
    const auto read = ReadConfiguration(WriteConfiguration(WithText(value)));
    EXPECT_TRUE(read) << read.Result().GetDescription().Narrow();
    return read && read->texts.size() == 1 ? read->texts[0].value.Narrow() : "(lost)";
}

ConfigurationStep Select(std::size_t level, std::string name, std::string value)
{
    return {ConfigurationStep::Kind::Select, level, std::move(name), std::move(value)};
}

ConfigurationStep Feature(std::size_t level, std::string name, std::string value)
{
    return {ConfigurationStep::Kind::Feature, level, std::move(name), std::move(value)};
}

std::string Shown(const std::vector<ConfigurationStep>& steps)
{
    std::string text;
    for (const ConfigurationStep& step : steps)
        text += std::string(step.level, '.') + (step.kind == ConfigurationStep::Kind::Select ? "S " : "F ") +
                step.name + "=" + step.value + "\n";
    return text;
}

TEST(ConfigurationTextTest, WritesOneElementPerText)
{
    EXPECT_EQ(WriteConfiguration(WithText("0")),
              "<VxConfiguration version=\"1\"><Text name=\"name\" value=\"0\"/></VxConfiguration>");
}

TEST(ConfigurationTextTest, NestsWhatSelectorsSelect)
{
    Configuration configuration;
    configuration.devices.push_back(
        {"cam",
         {Feature(0, "W", "1"), Select(0, "S", "A"), Feature(1, "G", "2"), Select(0, "S", "B"),
          Select(1, "T", "x"), Feature(2, "H", "3"), Select(0, "S", "A")}});

    const std::string text = WriteConfiguration(configuration);

    EXPECT_EQ(
        text,
        "<VxConfiguration version=\"1\"><Device name=\"cam\"><Feature name=\"W\" value=\"1\"/>"
        "<Select name=\"S\" value=\"A\"><Feature name=\"G\" value=\"2\"/></Select>"
        "<Select name=\"S\" value=\"B\"><Select name=\"T\" value=\"x\"><Feature name=\"H\" value=\"3\"/>"
        "</Select></Select><Select name=\"S\" value=\"A\"/></Device></VxConfiguration>");
    const auto read = ReadConfiguration(text);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->devices.size(), 1u);
    EXPECT_EQ(read->devices[0].name.Narrow(), "cam");
    EXPECT_EQ(Shown(read->devices[0].steps), Shown(configuration.devices[0].steps));
}

TEST(ConfigurationTextTest, KeepsDevicesStreamsAndTextsInOrder)
{
    Configuration configuration;
    configuration.texts = {{"b", "1"}, {"a", "2"}};
    configuration.devices = {{"one", {}}, {"", {}}};
    configuration.streams = {{"s", {Feature(0, "X", "y")}}};

    const auto read = ReadConfiguration(WriteConfiguration(configuration));

    ASSERT_TRUE(read);
    ASSERT_EQ(read->texts.size(), 2u);
    EXPECT_EQ(read->texts[0].name.Narrow(), "b");
    EXPECT_EQ(read->texts[1].value.Narrow(), "2");
    ASSERT_EQ(read->devices.size(), 2u);
    EXPECT_TRUE(read->devices[1].name.IsEmpty());
    ASSERT_EQ(read->streams.size(), 1u);
    EXPECT_EQ(Shown(read->streams[0].steps), "F X=y\n");
}

TEST(ConfigurationTextTest, ReadsAnEmptyConfiguration)
{
    const auto read = ReadConfiguration(WriteConfiguration({}));

    ASSERT_TRUE(read);
    EXPECT_TRUE(read->texts.empty());
}

TEST(ConfigurationTextTest, KeepsEveryCharacter)
{
    for (const std::string& value : {std::string(),
                                     std::string(" "),
                                     std::string("  two  "),
                                     std::string("\t\r\n"),
                                     std::string("a\0b", 3),
                                     std::string("<&>\"'"),
                                     std::string("\\"),
                                     std::string("\\x41 \\u0041 \\\\"),
                                     std::string("&#65;&amp;"),
                                     std::string("]]>"),
                                     std::string("\x01\x1F\x7F"),
                                     std::string("\xC2\x80\xC2\x9F\xC2\xA0"),
                                     std::string("\xE4\xB8\xAD\xE6\x96\x87"),
                                     std::string("\xF0\x9F\x98\x80"),
                                     std::string("\xEF\xBF\xBE\xEF\xBF\xBF"),
                                     std::string("\xEE\x80\x80"),
                                     std::string("\xF4\x8F\xBF\xBF"),
                                     std::string("\xFF\xC2\xE4\xB8 \xED\xA0\x80"),
                                     std::string("</VxConfiguration>"),
                                     std::string(100000, 'x')})
        EXPECT_EQ(RoundTrip(value), value);
}

TEST(ConfigurationTextTest, KeepsEveryCodePoint)
{
    std::u32string all;
    for (char32_t code = 0; code <= 0x10FFFF; code += code < 0x3000 ? 1 : 13)
        if (code < 0xD800 || code > 0xDFFF)
            all += code;
    std::wstring wide;
    for (const char32_t code : all) {
        if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
            wide += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
            wide += static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            wide += static_cast<wchar_t>(code);
        }
    }
    const VxString text(wide);

    EXPECT_EQ(VxString(RoundTrip(text.Narrow())).Wide(), wide);
}

TEST(ConfigurationTextTest, KeepsRandomBytes)
{
    std::mt19937 random(5);
    for (int i = 0; i < 500; ++i) {
        std::string value;
        const auto length = random() % 40;
        for (unsigned j = 0; j < length; ++j)
            value += static_cast<char>(random() % 256);
        EXPECT_EQ(RoundTrip(value), value);
    }
}

TEST(ConfigurationTextTest, IsOneLineOfPrintableAscii)
{
    const std::string text = WriteConfiguration(WithText("\xF0\x9F\x98\x80\n\r\t\x01\xFF\xEF\xBF\xBF"));

    for (const char c : text)
        EXPECT_TRUE(c >= ' ' && c < '\x7F') << static_cast<int>(c);
}

TEST(ConfigurationTextTest, AcceptsBlanksAround)
{
    EXPECT_TRUE(ReadConfiguration("\n " + WriteConfiguration({}) + "\r\n"));
}

TEST(ConfigurationTextTest, KeepsHalvesOfSurrogatePairsThatStandAlone)
{
    for (const std::wstring& value :
         {std::wstring(L"\xD800"), std::wstring(L"\xDC00"), std::wstring(L"a\xDBFFz"),
          std::wstring(L"\xDFFF\xD800"), std::wstring(L"\x4E2D\xD800\\\n")}) {
        const auto read = ReadConfiguration(WriteConfiguration(WithText(VxString(value))));
        ASSERT_TRUE(read);
        EXPECT_EQ(read->texts[0].value.Wide(), value);
    }
}

TEST(ConfigurationTextTest, RefusesEveryTruncation)
{
    Configuration configuration = WithText("\\ value \xE4\xB8\xAD");
    configuration.devices.push_back(
        {"cam", {Select(0, "S", "A"), Feature(1, "G", "<2>"), Select(0, "S", "B")}});
    configuration.streams.push_back({"", {Feature(0, "X", "\n")}});
    const std::string text = WriteConfiguration(configuration);

    for (std::size_t length = 0; length < text.size(); ++length) {
        const auto read = ReadConfiguration(text.substr(0, length));
        EXPECT_EQ(read.Result().Code(), VxError::InvalidData) << length;
        EXPECT_THAT(read.Result().GetDescription().Narrow(),
                    testing::StartsWith("the configuration is damaged at character "));
    }
}

TEST(ConfigurationTextTest, AcceptsBlanksAndCommentsBetweenElements)
{
    const auto read = ReadConfiguration("<VxConfiguration version=\"1\">\r\n  <!-- of the left camera -->\n"
                                        "\t<Text name=\"a\" value=\"b\"/>\n</VxConfiguration>");

    ASSERT_TRUE(read);
    ASSERT_EQ(read->texts.size(), 1u);
    EXPECT_EQ(read->texts[0].value.Narrow(), "b");
}

TEST(ConfigurationTextTest, ReadsEveryFormOfAReference)
{
    const auto read = ReadConfiguration("<VxConfiguration version=\"1\"><Text name=\"a\" "
                                        "value=\"&lt;&apos;&#65;&#x4e2D;&#x1F600;\"/></VxConfiguration>");

    ASSERT_TRUE(read);
    EXPECT_EQ(read->texts[0].value.Narrow(), "<'A\xE4\xB8\xAD\xF0\x9F\x98\x80");
}

TEST(ConfigurationTextTest, RefusesEntitiesAndDeclarations)
{
    const std::string open = "<VxConfiguration version=\"1\">";
    const std::string close = "</VxConfiguration>";
    const std::string bomb =
        "<!DOCTYPE VxConfiguration [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>";
    for (const std::string& text :
         {bomb + open + "<Text name=\"n\" value=\"&b;\"/>" + close,
          open + bomb + "<Text name=\"n\" value=\"1\"/>" + close,
          open + "<Text name=\"n\" value=\"&b;\"/>" + close, open + "<Text name=\"n\" value=\"&\"/>" + close,
          open + "<Text name=\"n\" value=\"&amp\"/>" + close,
          open + "<Text name=\"n\" value=\"&#;\"/>" + close,
          open + "<Text name=\"n\" value=\"&#x;\"/>" + close,
          open + "<Text name=\"n\" value=\"&#0;\"/>" + close,
          open + "<Text name=\"n\" value=\"&#xD800;\"/>" + close,
          open + "<Text name=\"n\" value=\"&#xFFFE;\"/>" + close,
          open + "<Text name=\"n\" value=\"&#x110000;\"/>" + close,
          open + "<Text name=\"n\" value=\"&#99999999999;\"/>" + close})
        EXPECT_EQ(ReadConfiguration(text).Result().Code(), VxError::InvalidData) << text;
}

TEST(ConfigurationTextTest, RefusesBytesThatNoTextHas)
{
    const std::string open = "<VxConfiguration version=\"1\"><Text name=\"n\" value=\"";
    const std::string close = "\"/></VxConfiguration>";
    for (const std::string& value : {std::string("\0", 1), std::string("\x01"), std::string("\xFF"),
                                     std::string("\xC0\x80"), std::string("\xED\xA0\x80")}) {
        const auto read = ReadConfiguration(open + value + close);
        ASSERT_FALSE(read);
        EXPECT_THAT(read.Error().GetDescription().Narrow(), testing::HasSubstr("at character 52: "));
    }
}

TEST(ConfigurationTextTest, RefusesATextOfAnyLengthInBoundedTime)
{
    const std::string text = "<VxConfiguration version=\"1\">" + std::string(17u * 1024 * 1024, ' ');

    EXPECT_EQ(ReadConfiguration(text).Result().GetDescription().Narrow(),
              "the configuration is damaged at character 16777217: it is longer than 16777216 bytes");
}

TEST(ConfigurationTextTest, RefusesWhatItDidNotWrite)
{
    const std::string open = "<VxConfiguration version=\"1\">";
    const std::string close = "</VxConfiguration>";
    for (const std::string& text : {std::string(),
                                    std::string("garbage"),
                                    std::string("<VxConfiguration/>"),
                                    "x" + open + close,
                                    open + close + "x",
                                    open + close + open + close,
                                    "<VxConfiguration version=\"2\">" + close,
                                    "<VxConfiguration >" + close,
                                    open + "<Text name=\"a\"/>" + close,
                                    open + "<Text value=\"a\"/>" + close,
                                    open + "<Text name=\"a\" value=\"\\\"/>" + close,
                                    open + "<Text name=\"a\" value=\"\\x4\"/>" + close,
                                    open + "<Text name=\"a\" value=\"\\u0041\"/>" + close,
                                    open + "<Text name=\"a\" value=\"\\n\"/>" + close,
                                    open + "<Other/>" + close,
                                    open + "text" + close,
                                    open + "<Device/>" + close,
                                    open + "<Device name=\"\"><Thing name=\"\" value=\"\"/></Device>" + close,
                                    open +
                                        "<Device name=\"\"><Feature name=\"a\" value=\"\"><Feature "
                                        "name=\"b\" value=\"\"/></Feature></Device>" +
                                        close,
                                    open + "<Device name=\"\">" + close})
        EXPECT_EQ(ReadConfiguration(text).Result().Code(), VxError::InvalidData) << text;
}

TEST(ConfigurationTextTest, SaysAtWhichCharacterATextIsDamaged)
{
    const std::string open = "  <VxConfiguration version=\"1\">"; // 31 characters
    const auto damaged = ReadConfiguration(open + "<Wrong/></VxConfiguration>");

    ASSERT_FALSE(damaged);
    EXPECT_EQ(damaged.Error().GetDescription().Narrow(),
              "the configuration is damaged at character 33: \"Wrong\" is not known");
}

TEST(ConfigurationTextTest, CountsCharactersAndNotBytes)
{
    const auto damaged =
        ReadConfiguration("<VxConfiguration version=\"1\"><Text name=\"\xC3\xA4\xF0\x9F\x98\x80\" "
                          "value=\"&\"/></VxConfiguration>");

    ASSERT_FALSE(damaged);
    EXPECT_EQ(damaged.Error().GetDescription().Narrow(),
              "the configuration is damaged at character 53: an ampersand that begins no character");
}

TEST(ConfigurationTextTest, NamesAnotherVersionAndItsPlace)
{
    const auto other = ReadConfiguration("<VxConfiguration version=\"2\"></VxConfiguration>");

    ASSERT_FALSE(other);
    EXPECT_EQ(other.Error().GetDescription().Narrow(),
              "the configuration is damaged at character 18: its version is \"2\"; known is \"1\"");
}

TEST(ConfigurationTextTest, ShowsNoMoreThanTheBeginningOfAnUnknownName)
{
    const auto damaged = ReadConfiguration("<VxConfiguration version=\"1\"><" + std::string(1000, 'W') +
                                           "/></VxConfiguration>");

    ASSERT_FALSE(damaged);
    EXPECT_LT(damaged.Error().GetDescription().GetLength(), 150u);
}

/// Selectors inside of each other.
std::string Nested(std::size_t depth)
{
    std::string text = "<VxConfiguration version=\"1\"><Device name=\"\">";
    for (std::size_t i = 0; i < depth; ++i)
        text += "<Select name=\"S\" value=\"1\">";
    for (std::size_t i = 0; i < depth; ++i)
        text += "</Select>";
    return text + "</Device></VxConfiguration>";
}

TEST(ConfigurationTextTest, SurvivesDeepNesting)
{
    const auto read = ReadConfiguration(Nested(kMaxSteps));

    ASSERT_TRUE(read);
    ASSERT_EQ(read->devices.size(), 1u);
    ASSERT_EQ(read->devices[0].steps.size(), kMaxSteps);
    EXPECT_EQ(read->devices[0].steps.back().level, kMaxSteps - 1);
}

TEST(ConfigurationTextTest, RefusesMoreStepsThanACameraCanHave)
{
    const auto nested = ReadConfiguration(Nested(100'000));
    Configuration flat;
    flat.streams.push_back({"s", std::vector(kMaxSteps + 1, Feature(0, "W", "1"))});

    ASSERT_FALSE(nested);
    EXPECT_EQ(nested.Error().Code(), VxError::InvalidData);
    EXPECT_THAT(nested.Error().GetDescription().Narrow(), testing::HasSubstr("more than 25000 values"));
    EXPECT_FALSE(ReadConfiguration(WriteConfiguration(flat)));
    flat.streams[0].steps.pop_back();
    EXPECT_TRUE(ReadConfiguration(WriteConfiguration(flat)));
}

TEST(ConfigurationTextTest, SurvivesRandomDamage)
{
    Configuration configuration = WithText("value \\ & <");
    configuration.devices.push_back({"cam", {Select(0, "S", "A"), Feature(1, "G", "2")}});
    const std::string text = WriteConfiguration(configuration);
    std::mt19937 random(9);
    for (int i = 0; i < 20000; ++i) {
        std::string damaged = text;
        const auto changes = 1 + random() % 3;
        for (unsigned j = 0; j < changes; ++j)
            damaged[random() % damaged.size()] = static_cast<char>(random() % 256);
        const auto read = ReadConfiguration(damaged);
        EXPECT_TRUE(read || read.Error().Code() == VxError::InvalidData);
    }
}

} // namespace
} // namespace surface
