#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/genapi/formula/FormulaCode.h"
#include "VxCamera/genapi/formula/FormulaLexer.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace genapi {

/// Turns the text of a formula into steps for a stack machine.
///
/// Precedence from low to high: ?: || && | ^ & (= <>) (< <= > >=) (<< >>) (+ -) (* / %) ** unary. "**" and
/// the unary operators bind from the right, "==" and "!=" are other spellings of "=" and "<>".
///
/// Owner:  Formula::Compile, for one call. Borrows the text.
/// Thread: one.
class FormulaCompiler {
public:
    FormulaCompiler(std::string_view text, Arithmetic arithmetic);

    /// @return  INVALID_DATA with the character at which the text stops making sense
    [[nodiscard]] VxExpected<FormulaCode> Compile();

private:
    void ParseExpression();
    void ParseBinary(int lowestPrecedence);
    void ParseBinaryRest(FormulaToken token, FormulaOp op, int precedence);
    void ParseUnary();
    void ParseOperand();
    void ParseCall();
    void ParseName();
    void Expect(FormulaToken token, std::string_view what);

    std::size_t Emit(FormulaOp op, std::uint32_t target = 0);
    void EmitLiteral(FormulaValue value);
    void JumpHere(std::size_t instruction);
    void Push();
    void Pop(std::size_t count);
    void Fail(std::string_view what);
    [[nodiscard]] bool HasFailed() const { return !m_fault.empty(); }

    std::string_view m_text;
    FormulaLexer m_lexer;
    FormulaCode m_code;
    std::size_t m_stack = 0; // values on the stack after the steps emitted so far
    int m_depth = 0;
    std::string m_fault; // empty until the first error
};

} // namespace genapi
