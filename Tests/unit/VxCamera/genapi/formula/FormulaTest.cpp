#include "VxCamera/genapi/formula/Formula.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace genapi {
namespace {

/// Values by name; a name without a value fails.
class Values final : public IFormulaVariables {
public:
    Values(const Formula& formula, std::map<std::string, double> values)
        : m_formula(formula), m_values(std::move(values))
    {
    }

    VxExpected<std::int64_t> IntegerVariable(std::size_t index) override
    {
        const auto value = FloatVariable(index);
        return value ? VxExpected<std::int64_t>(static_cast<std::int64_t>(*value)) : value.Error();
    }

    VxExpected<double> FloatVariable(std::size_t index) override
    {
        const std::string& name = m_formula.Names()[index];
        asked.push_back(name);
        const auto found = m_values.find(name);
        if (found == m_values.end())
            return VxResult(VxError::Timeout, name + " cannot be read");
        return found->second;
    }

    std::vector<std::string> asked;

private:
    const Formula& m_formula;
    std::map<std::string, double> m_values;
};

VxExpected<std::int64_t> AsInteger(std::string_view text, std::map<std::string, double> values = {})
{
    const auto formula = Formula::Compile(text, Arithmetic::Integer);
    if (!formula)
        return formula.Error();
    Values variables(*formula, std::move(values));
    return formula->EvaluateInteger(variables);
}

VxExpected<double> AsFloat(std::string_view text, std::map<std::string, double> values = {})
{
    const auto formula = Formula::Compile(text, Arithmetic::Float);
    if (!formula)
        return formula.Error();
    Values variables(*formula, std::move(values));
    return formula->EvaluateFloat(variables);
}

struct Row {
    const char* text;
    std::int64_t integer;
    double number;
};

std::ostream& operator<<(std::ostream& out, const Row& row)
{
    return out << row.text;
}

class FormulaTableTest : public ::testing::TestWithParam<Row> {};

TEST_P(FormulaTableTest, GivesTheIntegerOfIntegerArithmetic)
{
    const auto value = AsInteger(GetParam().text);

    ASSERT_TRUE(value) << value.Error().GetDescription().Narrow();
    EXPECT_EQ(*value, GetParam().integer);
}

TEST_P(FormulaTableTest, GivesTheNumberOfFloatArithmetic)
{
    const auto value = AsFloat(GetParam().text);

    ASSERT_TRUE(value) << value.Error().GetDescription().Narrow();
    EXPECT_DOUBLE_EQ(*value, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Operators, FormulaTableTest,
    ::testing::Values(Row{"24+2*8", 40, 40}, Row{"10/4", 2, 2.5}, Row{"-7/2", -3, -3.5}, Row{"10%3", 1, 1},
                      Row{"-7%3", -1, -1}, Row{"2**10*2", 2048, 2048}, Row{"2**3**2", 512, 512},
                      Row{"4*-3", -12, -12}, Row{"~255", -256, -256}, Row{"-(2**2)", -4, -4},
                      Row{"(-2)**2", 4, 4}, Row{"+5 - -5", 10, 10}, Row{"3^1", 2, 2}, Row{"6&3", 2, 2},
                      Row{"6|3", 7, 7}, Row{"16>>4", 1, 1}, Row{"1<<40", 1099511627776, 1099511627776.0},
                      Row{"-16>>2", -4, -4}, Row{"1<<64", 0, 0}, Row{"1>>-1", 0, 0}, Row{"10-4-3", 3, 3},
                      Row{"100/10/5", 2, 2}, Row{"~~7", 7, 7}, Row{"- - 3", 3, 3}));

INSTANTIATE_TEST_SUITE_P(Comparisons, FormulaTableTest,
                         ::testing::Values(Row{"1=1", 1, 1}, Row{"1==2", 0, 0}, Row{"1<>2", 1, 1},
                                           Row{"2!=2", 0, 0}, Row{"1<2", 1, 1}, Row{"2<=2", 1, 1},
                                           Row{"1>2", 0, 0}, Row{"2>=3", 0, 0}, Row{"(2=2)&&(1=2)", 0, 0},
                                           Row{"5&&7", 1, 1}, Row{"0||9", 1, 1}, Row{"0||0", 0, 0},
                                           Row{"1+1=2", 1, 1}, Row{"1|2=2", 1, 1}, Row{"1<2=1", 1, 1},
                                           Row{"1<<1<3", 1, 1}, Row{"1||0&&0", 1, 1}, Row{"1=1?1:0", 1, 1},
                                           Row{"0?1:0?2:3", 3, 3}, Row{"1?0?4:5:6", 5, 5},
                                           Row{"(0 & 1)=0?((0 & 1)+2):1", 2, 2},
                                           Row{"(~(~0xC2000221|0xFEFFFFFF)) ? 2:0", 0, 0}));

INSTANTIATE_TEST_SUITE_P(FunctionsOfBoth, FormulaTableTest,
                         ::testing::Values(Row{"SGN(-2)", -1, -1}, Row{"SGN(0)", 0, 0}, Row{"SGN(7)", 1, 1},
                                           Row{"NEG(2)", -2, -2}, Row{"ABS(-10000000000)", 10000000000, 1e10},
                                           Row{"sqrt(16)", 4, 4}, Row{"Round(5)", 5, 5},
                                           Row{"ROUND(5, 2)", 5, 5}, Row{"TRUNC(3)", 3, 3},
                                           Row{"abs ( -3 )", 3, 3}));

INSTANTIATE_TEST_SUITE_P(Literals, FormulaTableTest,
                         ::testing::Values(Row{"0x1F", 31, 31}, Row{"0Xff", 255, 255}, Row{"1e3", 1000, 1000},
                                           Row{"2.", 2, 2}, Row{"\n\t 1 \r\n + 1", 2, 2},
                                           Row{"0xFFFFFFFFFFFFFFFF", -1, -1}));

struct FloatRow {
    const char* text;
    double number;
};

TEST(FormulaTest, ComputesFunctionsInFloatArithmetic)
{
    const double pi = 3.14159265358979323846;
    const std::vector<FloatRow> rows{{"NEG(-2.5)", 2.5},
                                     {"LG(10)", 1},
                                     {"TRUNC(-11.9)", -11},
                                     {"ROUND(-20.9)", -21},
                                     {"ROUND(2.5)", 3},
                                     {"ROUND(-2.5)", -3},
                                     {"FLOOR(-11.9)", -12},
                                     {"CEIL(-11.9)", -11},
                                     {"ROUND(10.11, 1)", 10.1},
                                     {"ROUND(-20.99,1)", -21},
                                     {"(4/(20/10000))", 2000},
                                     {".5*4", 2},
                                     {"1e-3*1000", 1},
                                     {"SQRT(2)*SQRT(2)", 2},
                                     {"5.5%2", 1.5},
                                     {"ASIN(1)", pi / 2},
                                     {"ACOS(-1)", pi},
                                     {"ATAN(1)*4", pi},
                                     {"TAN(0)", 0},
                                     {"EXP(0)", 1},
                                     {"2**0.5", std::sqrt(2)},
                                     {"2.1=2", 0},
                                     {"7.9 & 3", 3}};
    for (const FloatRow& row : rows) {
        const auto value = AsFloat(row.text);

        ASSERT_TRUE(value) << row.text << ": " << value.Error().GetDescription().Narrow();
        EXPECT_NEAR(*value, row.number, 1e-12) << row.text;
    }
}

TEST(FormulaTest, DropsTheFractionOfLiteralsInIntegerArithmetic)
{
    EXPECT_EQ(*AsInteger("2.1=2"), 1);
    EXPECT_EQ(*AsInteger("NEG(-2.5)"), 2);
}

TEST(FormulaTest, KeepsAll64BitsInIntegerArithmetic)
{
    EXPECT_EQ(*AsInteger("(HIGH << 32) | LOW", {{"HIGH", 2147483647.0}, {"LOW", 4294967295.0}}), INT64_MAX);
}

TEST(FormulaTest, WrapsAroundAtTheEndsOfTheIntegers)
{
    EXPECT_EQ(*AsInteger("9223372036854775807 + 1"), INT64_MIN);
    EXPECT_EQ(*AsInteger("(-9223372036854775807 - 1) / -1"), INT64_MIN);
    EXPECT_EQ(*AsInteger("(-9223372036854775807 - 1) % -1"), 0);
    EXPECT_EQ(*AsInteger("ABS(-9223372036854775807 - 1)"), INT64_MIN);
}

TEST(FormulaTest, RaisesToNegativePowersLikeATruncatedReciprocal)
{
    EXPECT_EQ(*AsInteger("2**-1"), 0);
    EXPECT_EQ(*AsInteger("(-1)**-3"), -1);
    EXPECT_FALSE(AsInteger("0**-1"));
}

TEST(FormulaTest, RefusesToDivideByZero)
{
    for (const char* text : {"1/0", "1%0", "4/(20/10000)"}) {
        const auto value = AsInteger(text);

        ASSERT_FALSE(value) << text;
        EXPECT_EQ(value.Error().Code(), VxError::InvalidData);
    }
    EXPECT_FALSE(AsFloat("1/0"));
    EXPECT_FALSE(AsFloat("1%0"));
}

TEST(FormulaTest, RefusesAResultThatIsNoNumber)
{
    EXPECT_FALSE(AsFloat("LN(-1)"));
    EXPECT_FALSE(AsFloat("SQRT(-1)"));
}

TEST(FormulaTest, SaturatesFloatsThatAreNoIntegers)
{
    EXPECT_EQ(TruncateToInteger(1e30), INT64_MAX);
    EXPECT_EQ(TruncateToInteger(-1e30), INT64_MIN);
    EXPECT_EQ(TruncateToInteger(std::nan("")), 0);
    EXPECT_EQ(RoundToInteger(-2.5), -3);
    EXPECT_EQ(TruncateToInteger(-2.5), -2);
}

TEST(FormulaTest, ReadsVariablesWithDots)
{
    EXPECT_EQ(*AsInteger("Width.Max - OFFSET_1", {{"Width.Max", 640}, {"OFFSET_1", 16}}), 624);
}

TEST(FormulaTest, ListsEachNameOnce)
{
    const auto formula = Formula::Compile("A + B*A + PI + SIN(A)", Arithmetic::Float);

    ASSERT_TRUE(formula);
    EXPECT_EQ(formula->Names(), (std::vector<std::string>{"A", "B", "PI"}));
}

TEST(FormulaTest, ReadsOnlyTheVariablesOfTheBranchItTakes)
{
    const auto formula = Formula::Compile("SEL = 0 ? A : B/SEL", Arithmetic::Integer);
    ASSERT_TRUE(formula);
    Values variables(*formula, {{"SEL", 0}, {"A", 7}});

    const auto value = formula->EvaluateInteger(variables);

    ASSERT_TRUE(value);
    EXPECT_EQ(*value, 7);
    EXPECT_EQ(variables.asked, (std::vector<std::string>{"SEL", "A"}));
}

TEST(FormulaTest, EndsLogicalOperatorsEarly)
{
    EXPECT_EQ(*AsInteger("0 && MISSING"), 0);
    EXPECT_EQ(*AsInteger("3 || MISSING"), 1);
    EXPECT_FALSE(AsInteger("1 && MISSING"));
}

TEST(FormulaTest, HandsOnWhatAVariableFailedWith)
{
    const auto value = AsInteger("1 + MISSING");

    ASSERT_FALSE(value);
    EXPECT_EQ(value.Error().Code(), VxError::Timeout);
}

TEST(FormulaTest, KnowsPiAndE)
{
    EXPECT_DOUBLE_EQ(*BuiltInConstant("PI"), 3.14159265358979323846);
    EXPECT_DOUBLE_EQ(*BuiltInConstant("E"), 2.71828182845904523536);
    EXPECT_FALSE(BuiltInConstant("TAU"));
}

TEST(FormulaTest, SaysWhereAFormulaIsWrong)
{
    struct Case {
        const char* text;
        const char* place;
    };
    for (const Case& wrong :
         {Case{"", "character 1"}, Case{"1 +", "character 4"}, Case{"(1", "character 3"},
          Case{"1 2", "character 3"}, Case{"1 ? 2", "character 6"}, Case{"FOO(1)", "character 1"},
          Case{"SIN()", "character 5"}, Case{"1 $ 2", "character 3"}, Case{"A := 1", "character 3"},
          Case{"ROUND(1,2,3)", "character 10"}, Case{"0x", "character 1"}, Case{")", "character 1"}}) {
        const auto value = AsInteger(wrong.text);

        ASSERT_FALSE(value) << wrong.text;
        EXPECT_EQ(value.Error().Code(), VxError::InvalidData);
        EXPECT_NE(value.Error().GetDescription().Narrow().find(wrong.place), std::string::npos)
            << wrong.text << ": " << value.Error().GetDescription().Narrow();
    }
}

TEST(FormulaTest, RefusesNestingWithoutEnd)
{
    for (const char* piece : {"(", "-(", "1?", "1**", "ABS(", "1+("}) {
        std::string text;
        for (int i = 0; i < 10000; ++i)
            text += piece;
        EXPECT_FALSE(AsInteger(text + "1")) << piece;
    }
}

TEST(FormulaTest, TakesLongChainsThatAreNotNested)
{
    std::string sum = "0";
    std::string choice;
    for (int i = 0; i < 3000; ++i) {
        sum += "+1";
        choice += "X=" + std::to_string(i) + "?" + std::to_string(i * 2) + ":";
    }

    EXPECT_EQ(*AsInteger(sum), 3000);
    EXPECT_EQ(*AsInteger(choice + "-1", {{"X", 2999}}), 5998);
    EXPECT_EQ(*AsInteger(choice + "-1", {{"X", 3000}}), -1);
}

TEST(FormulaTest, RefusesMoreThanItsLimits)
{
    EXPECT_FALSE(AsInteger(std::string(70000, ' ') + "1"));

    std::string names = "0";
    for (int i = 0; i < 600; ++i)
        names += "+V" + std::to_string(i);
    EXPECT_FALSE(AsInteger(names));
}

TEST(FormulaTest, SurvivesRandomText)
{
    const std::vector<std::string> words{"1",    "0",
                                         "X",    "0x7F",
                                         "2.5",  "(",
                                         ")",    "+",
                                         "-",    "*",
                                         "/",    "%",
                                         "**",   "<<",
                                         ">>",   "&",
                                         "|",    "^",
                                         "~",    "&&",
                                         "||",   "=",
                                         "<>",   "<",
                                         ">=",   "?",
                                         ":",    ",",
                                         "SIN(", "ROUND(",
                                         "ABS(", " ",
                                         "E",    "9223372036854775807",
                                         "#"};
    std::mt19937 random(1);
    int compiled = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        const auto length = random() % 12;
        for (unsigned word = 0; word < length; ++word)
            text += words[random() % words.size()];
        const auto integer = AsInteger(text, {{"X", 3}, {"E", 2}});
        const auto number = AsFloat(text, {{"X", 3}, {"E", 2}});
        compiled += integer.HasValue() || number.HasValue() ? 1 : 0;
        EXPECT_FALSE(number && std::isnan(*number)) << text;
    }
    EXPECT_GT(compiled, 200); // of the texts of a single word alone some 280 are a value
}

} // namespace
} // namespace genapi
