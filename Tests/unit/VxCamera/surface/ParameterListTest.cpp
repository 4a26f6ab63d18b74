#include "VxCamera/surface/ParameterList.h"

#include <gtest/gtest.h>

#include "VxCamera/surface/ListedBoolean.h"
#include "VxCamera/surface/ListedCommand.h"
#include "VxCamera/surface/ListedEnum.h"
#include "VxCamera/surface/ListedFloat.h"
#include "VxCamera/surface/ListedInteger.h"
#include "VxCamera/surface/ListedString.h"
#include "VxDSSource/camera/VxGenInteger.h"

namespace {

/// One feature of each kind over plain variables.
class ParameterListTest : public testing::Test {
protected:
    ParameterListTest()
    {
        m_list.Add<ListedInteger>(ParameterFacts{"Retries", "Communication", VxGenVisibility::Guru},
                                  ListedInteger::Access{[this] { return m_retries; },
                                                        [this](std::int64_t v) {
                                                            m_retries = v;
                                                            return m_setResult;
                                                        },
                                                        0, 20});
        m_list.Add<ListedInteger>(ParameterFacts{"ErrorCount", "Statistics"},
                                  ListedInteger::Access{[]() -> std::int64_t { return 7; }, {}});
        m_list.Add<ListedFloat>(ParameterFacts{"Bandwidth", "Statistics"}, [] { return 0.1; });
        m_list.Add<ListedBoolean>(
            ParameterFacts{"ResendEnabled", "Communication"}, [this] { return m_isOn; },
            [this](bool v) { m_isOn = v; });
        m_list.Add<ListedString>(ParameterFacts{"Interface", "Communication"}, [] { return VxString("lo"); });
        m_list.Add<ListedCommand>(ParameterFacts{"Reset", "Statistics"}, [this] { ++m_resets; });
        m_list.Add<ListedEnum>(ParameterFacts{"LastError", "Statistics"},
                               std::vector<std::string_view>{"None", "Timeout"},
                               [] { return std::size_t{1}; });
        m_list.Add<ListedEnum>(
            ParameterFacts{"Mode", "Communication"}, std::vector<std::string_view>{"Automatic", "Fixed"},
            [this] { return m_mode; },
            [this](std::size_t mode) {
                m_mode = mode;
                return VxResult::Ok();
            });
        m_list.Add<ListedInteger>(ParameterFacts{"AckTimeout", "Communication", VxGenVisibility::Guru, "ms"},
                                  ListedInteger::Access{[]() -> std::int64_t { return 200; }, {}});
    }

    [[nodiscard]] std::string TextOf(const char* name) const
    {
        VxString text;
        EXPECT_TRUE(m_list.Get(VxString(name))->ToString(text).IsOK());
        return text.Narrow();
    }
    [[nodiscard]] VxError SetText(const char* name, const char* text)
    {
        return m_list.Get(VxString(name))->FromString(text).Code();
    }

    std::int64_t m_retries = 3;
    VxResult m_setResult = VxResult::Ok();
    bool m_isOn = false;
    int m_resets = 0;
    std::size_t m_mode = 0;
    ParameterList m_list;
};

TEST_F(ParameterListTest, KeepsTheOrderInWhichFeaturesWereAdded)
{
    ASSERT_EQ(m_list.GetCount(), 9u);
    EXPECT_TRUE(m_list.Get(0)->GetName() == "Retries");
    EXPECT_TRUE(m_list.Get(6)->GetName() == "LastError");
    EXPECT_EQ(m_list.Get(9), nullptr);
}

TEST_F(ParameterListTest, FindsByExactName)
{
    EXPECT_NE(m_list.Get("Reset"), nullptr);
    EXPECT_EQ(m_list.Get("reset"), nullptr);
}

TEST_F(ParameterListTest, WritesEachKindAsText)
{
    EXPECT_EQ(TextOf("Retries"), "3");
    EXPECT_EQ(TextOf("Bandwidth"), "0.1"); // shortest form that reads back
    EXPECT_EQ(TextOf("ResendEnabled"), "false");
    EXPECT_EQ(TextOf("Interface"), "lo");
    EXPECT_EQ(TextOf("LastError"), "Timeout");
    EXPECT_EQ(TextOf("Reset"), "");
}

TEST_F(ParameterListTest, SetsFromTextWithinTheLimits)
{
    EXPECT_EQ(SetText("Retries", "20"), VxError::Ok);
    EXPECT_EQ(m_retries, 20);
    EXPECT_EQ(SetText("Retries", "21"), VxError::OutOfRange);
    EXPECT_EQ(SetText("Retries", "-1"), VxError::OutOfRange);
    EXPECT_EQ(SetText("Retries", "3x"), VxError::InvalidData);
    EXPECT_EQ(SetText("Retries", ""), VxError::InvalidData);
    EXPECT_EQ(SetText("Retries", "99999999999999999999"), VxError::InvalidData);
    EXPECT_EQ(m_retries, 20);
}

TEST_F(ParameterListTest, TellsWhatIsBehindANumberRefuses)
{
    m_setResult = VxResult(VxError::AccessDenied, "somebody else has control");

    EXPECT_EQ(SetText("Retries", "5"), VxError::AccessDenied);
    EXPECT_EQ(m_list.SetIntegerValue("Retries", 5).GetDescription(), "somebody else has control");
}

TEST_F(ParameterListTest, RefusesToWriteWhatCanOnlyBeRead)
{
    EXPECT_EQ(SetText("ErrorCount", "1"), VxError::NotWritable);
    EXPECT_EQ(SetText("Bandwidth", "1"), VxError::NotWritable);
    EXPECT_EQ(SetText("Interface", "eth0"), VxError::NotWritable);
    EXPECT_EQ(SetText("LastError", "None"), VxError::NotWritable);
    EXPECT_FALSE(m_list.Get("ErrorCount")->IsWritable());
}

TEST_F(ParameterListTest, TakesTrueAndFalseAndTheirNumbersOnly)
{
    EXPECT_EQ(SetText("ResendEnabled", "true"), VxError::Ok);
    EXPECT_TRUE(m_isOn);
    EXPECT_EQ(SetText("ResendEnabled", "TRUE"), VxError::InvalidData);
    EXPECT_TRUE(m_isOn);
    EXPECT_EQ(SetText("ResendEnabled", "0"), VxError::Ok);
    EXPECT_FALSE(m_isOn);
    EXPECT_EQ(SetText("ResendEnabled", "1"), VxError::Ok);
    EXPECT_TRUE(m_isOn);
}

TEST_F(ParameterListTest, ChoosesAnEntryByItsName)
{
    EXPECT_EQ(SetText("Mode", "Fixed"), VxError::Ok);
    EXPECT_EQ(m_mode, 1u);
    EXPECT_EQ(TextOf("Mode"), "Fixed");

    const VxResult unknown = m_list.Get("Mode")->FromString("fixed");
    EXPECT_EQ(unknown.Code(), VxError::InvalidData);
    EXPECT_EQ(unknown.GetDescription().Narrow(), "Mode has no entry \"fixed\", but Automatic, Fixed");
    EXPECT_TRUE(m_list.Get("Mode")->IsWritable());
}

TEST_F(ParameterListTest, ANumberTellsItsUnit)
{
    VxString unit("before");
    EXPECT_TRUE(m_list.GetInteger("AckTimeout")->GetUnit(unit).IsOK());
    EXPECT_EQ(unit, "ms");
    EXPECT_TRUE(m_list.GetInteger("Retries")->GetUnit(unit).IsOK());
    EXPECT_EQ(unit, "");
}

TEST_F(ParameterListTest, ExecutesACommandByNameOrByText)
{
    EXPECT_TRUE(m_list.ExecuteCommand("Reset").IsOK());
    EXPECT_EQ(SetText("Reset", "anything"), VxError::Ok);
    EXPECT_EQ(m_resets, 2);
}

TEST_F(ParameterListTest, ReadsThroughTheShortForms)
{
    std::int64_t integer = 0;
    double number = 0;
    VxString entry;

    EXPECT_TRUE(m_list.GetIntegerValue("ErrorCount", integer).IsOK());
    EXPECT_TRUE(m_list.GetFloatValue("Bandwidth", number).IsOK());
    EXPECT_TRUE(m_list.GetEnumValue("LastError", entry).IsOK());

    EXPECT_EQ(integer, 7);
    EXPECT_EQ(number, 0.1);
    EXPECT_TRUE(entry == "Timeout");
    EXPECT_EQ(m_list.GetIntegerValue("Bandwidth", integer).Code(), VxError::TypeMismatch);
    EXPECT_EQ(m_list.GetIntegerValue("Nothing", integer).Code(), VxError::NotFound);
    EXPECT_EQ(integer, 7);
}

} // namespace
