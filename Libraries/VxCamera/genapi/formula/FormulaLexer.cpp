#include "VxCamera/genapi/formula/FormulaLexer.h"

#include <array>
#include <charconv>

#include "VxCamera/genapi/formula/Formula.h"

namespace genapi {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsNameStart(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool IsNamePart(char c)
{
    return IsNameStart(c) || IsDigit(c) || c == '.';
}

struct Symbol {
    std::string_view text;
    FormulaToken token;
    FormulaOp op;
};

// Longer symbols stand before those they begin with.
constexpr std::array kSymbols{
    Symbol{"||", FormulaToken::LogicalOr, FormulaOp::Or},
    Symbol{"&&", FormulaToken::LogicalAnd, FormulaOp::And},
    Symbol{"<>", FormulaToken::Operator, FormulaOp::NotEqual},
    Symbol{"!=", FormulaToken::Operator, FormulaOp::NotEqual},
    Symbol{"<=", FormulaToken::Operator, FormulaOp::LessOrEqual},
    Symbol{">=", FormulaToken::Operator, FormulaOp::GreaterOrEqual},
    Symbol{"<<", FormulaToken::Operator, FormulaOp::ShiftLeft},
    Symbol{">>", FormulaToken::Operator, FormulaOp::ShiftRight},
    Symbol{"==", FormulaToken::Operator, FormulaOp::Equal},
    Symbol{"**", FormulaToken::Operator, FormulaOp::Power},
    Symbol{"|", FormulaToken::Operator, FormulaOp::BitOr},
    Symbol{"^", FormulaToken::Operator, FormulaOp::BitXor},
    Symbol{"&", FormulaToken::Operator, FormulaOp::BitAnd},
    Symbol{"=", FormulaToken::Operator, FormulaOp::Equal},
    Symbol{"<", FormulaToken::Operator, FormulaOp::Less},
    Symbol{">", FormulaToken::Operator, FormulaOp::Greater},
    Symbol{"+", FormulaToken::Operator, FormulaOp::Add},
    Symbol{"-", FormulaToken::Operator, FormulaOp::Subtract},
    Symbol{"*", FormulaToken::Operator, FormulaOp::Multiply},
    Symbol{"/", FormulaToken::Operator, FormulaOp::Divide},
    Symbol{"%", FormulaToken::Operator, FormulaOp::Remainder},
    Symbol{"~", FormulaToken::Tilde, FormulaOp::Complement},
    Symbol{"(", FormulaToken::OpenParenthesis, FormulaOp::Literal},
    Symbol{")", FormulaToken::CloseParenthesis, FormulaOp::Literal},
    Symbol{",", FormulaToken::Comma, FormulaOp::Literal},
    Symbol{"?", FormulaToken::Question, FormulaOp::Literal},
    Symbol{":", FormulaToken::Colon, FormulaOp::Literal},
};

} // namespace

void FormulaLexer::Next()
{
    m_start = m_end;
    while (m_start < m_text.size() && IsBlank(m_text[m_start]))
        ++m_start;
    m_end = m_start;
    if (m_start == m_text.size()) {
        m_token = FormulaToken::End;
        return;
    }
    const char first = m_text[m_start];
    const bool isPointNumber = first == '.' && m_start + 1 < m_text.size() && IsDigit(m_text[m_start + 1]);
    if (IsDigit(first) || isPointNumber) {
        ReadNumber();
    } else if (IsNameStart(first)) {
        m_token = FormulaToken::Name;
        while (m_end < m_text.size() && IsNamePart(m_text[m_end]))
            ++m_end;
    } else {
        ReadOperator();
    }
}

bool FormulaLexer::IsCall() const
{
    std::size_t position = m_end;
    while (position < m_text.size() && IsBlank(m_text[position]))
        ++position;
    return position < m_text.size() && m_text[position] == '(';
}

void FormulaLexer::ReadNumber()
{
    constexpr int kHexadecimal = 16;
    const std::string_view rest = m_text.substr(m_start);
    m_token = FormulaToken::Number;
    if (!rest.starts_with("0x") && !rest.starts_with("0X")) {
        ReadDecimal();
        return;
    }
    std::uint64_t pattern = 0;
    const auto [end, error] =
        std::from_chars(rest.data() + 2, rest.data() + rest.size(), pattern, kHexadecimal);
    m_end = m_start + static_cast<std::size_t>(end - rest.data()); // end lies in rest
    if (error != std::errc())
        m_token = FormulaToken::Invalid;
    // A hexadecimal literal is a pattern of 64 bits: 0xFFFFFFFFFFFFFFFF is -1.
    if (m_arithmetic == Arithmetic::Integer)
        m_value.integer = static_cast<std::int64_t>(pattern);
    else
        m_value.number = static_cast<double>(static_cast<std::int64_t>(pattern));
}

void FormulaLexer::ReadDecimal()
{
    const std::string_view rest = m_text.substr(m_start);
    double number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    m_end = m_start + static_cast<std::size_t>(end - rest.data()); // end lies in rest
    if (error != std::errc()) {
        m_token = FormulaToken::Invalid;
        return;
    }
    if (m_arithmetic == Arithmetic::Float) {
        m_value.number = number;
        return;
    }
    std::uint64_t exact = 0;
    const auto [exactEnd, exactError] = std::from_chars(rest.data(), end, exact);
    const bool isWhole = exactError == std::errc() && exactEnd == end;
    m_value.integer = isWhole ? static_cast<std::int64_t>(exact) : TruncateToInteger(number);
}

void FormulaLexer::ReadOperator()
{
    const std::string_view rest = m_text.substr(m_start);
    for (const Symbol& symbol : kSymbols) {
        if (rest.starts_with(symbol.text)) {
            m_token = symbol.token;
            m_op = symbol.op;
            m_end = m_start + symbol.text.size();
            return;
        }
    }
    m_token = FormulaToken::Invalid;
    m_end = m_start + 1;
}

} // namespace genapi
