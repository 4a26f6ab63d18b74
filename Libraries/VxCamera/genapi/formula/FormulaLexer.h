#pragma once

#include "VxCamera/genapi/formula/FormulaCode.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace genapi {

/// Kinds of words in a formula; operators are named by what they do.
enum class FormulaToken : std::uint8_t {
    End,
    Invalid,
    Number,
    Name,
    OpenParenthesis,
    CloseParenthesis,
    Comma,
    Question,
    Colon,
    LogicalOr,
    LogicalAnd,
    Operator, ///< a binary operator with an op of its own; "+" and "-" may be unary as well
    Tilde,
};

/// Cuts a formula into words.
///
/// Owner:  FormulaCompiler, by value. Borrows the text.
/// Thread: one.
class FormulaLexer {
public:
    FormulaLexer(std::string_view text, Arithmetic arithmetic) : m_text(text), m_arithmetic(arithmetic)
    {
        Next();
    }

    /// The current word.
    [[nodiscard]] FormulaToken Token() const { return m_token; }
    [[nodiscard]] std::string_view Word() const { return m_text.substr(m_start, m_end - m_start); }
    /// @return  offset of the current word in characters, from 0
    [[nodiscard]] std::size_t Position() const { return m_start; }
    /// Only for Number. @return  the value in the formula's arithmetic
    [[nodiscard]] FormulaValue Value() const { return m_value; }
    /// Only for Operator.
    [[nodiscard]] FormulaOp Op() const { return m_op; }

    void Next();

    /// @return  whether the character behind the current word, blanks skipped, is an opening parenthesis
    [[nodiscard]] bool IsCall() const;

private:
    void ReadNumber();
    void ReadDecimal();
    void ReadOperator();

    std::string_view m_text;
    Arithmetic m_arithmetic;
    std::size_t m_start = 0;
    std::size_t m_end = 0;
    FormulaToken m_token = FormulaToken::End;
    FormulaOp m_op = FormulaOp::Literal;
    FormulaValue m_value{};
};

} // namespace genapi
