#include "VxCamera/genapi/formula/FormulaCompiler.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace genapi {

namespace {

// Chosen: far above the 2,000 characters and ten levels seen in cameras; the depth bounds the parser's
// recursion.
constexpr std::size_t kMaxCharacters = 64 * 1024;
constexpr int kMaxDepth = 200;
constexpr std::size_t kMaxNames = 512;
constexpr std::size_t kShownCharacters = 80; // of a formula, in an error

constexpr int kPowerPrecedence = 11;

struct Function {
    std::string_view name;
    FormulaOp op;
};

constexpr std::array kFunctions{
    Function{"SIN", FormulaOp::Sin},     Function{"COS", FormulaOp::Cos},
    Function{"TAN", FormulaOp::Tan},     Function{"ASIN", FormulaOp::Asin},
    Function{"ACOS", FormulaOp::Acos},   Function{"ATAN", FormulaOp::Atan},
    Function{"ABS", FormulaOp::Abs},     Function{"EXP", FormulaOp::Exp},
    Function{"LN", FormulaOp::Ln},       Function{"LG", FormulaOp::Lg},
    Function{"SQRT", FormulaOp::Sqrt},   Function{"TRUNC", FormulaOp::Trunc},
    Function{"ROUND", FormulaOp::Round}, Function{"FLOOR", FormulaOp::Floor},
    Function{"CEIL", FormulaOp::Ceil},   Function{"SGN", FormulaOp::Sign},
    Function{"NEG", FormulaOp::Negate},
};

const Function* FindFunction(std::string_view word)
{
    const auto isSame = [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; };
    for (const Function& function : kFunctions)
        if (std::equal(word.begin(), word.end(), function.name.begin(), function.name.end(), isSame))
            return &function;
    return nullptr;
}

/// @return  0 for a word that is no binary operator
int Precedence(FormulaToken token, FormulaOp op)
{
    if (token == FormulaToken::LogicalOr)
        return 1;
    if (token == FormulaToken::LogicalAnd)
        return 2;
    if (token != FormulaToken::Operator)
        return 0;
    switch (op) {
    case FormulaOp::BitOr:
        return 3;
    case FormulaOp::BitXor:
        return 4;
    case FormulaOp::BitAnd:
        return 5;
    case FormulaOp::Equal:
    case FormulaOp::NotEqual:
        return 6;
    case FormulaOp::Less:
    case FormulaOp::LessOrEqual:
    case FormulaOp::Greater:
    case FormulaOp::GreaterOrEqual:
        return 7;
    case FormulaOp::ShiftLeft:
    case FormulaOp::ShiftRight:
        return 8;
    case FormulaOp::Add:
    case FormulaOp::Subtract:
        return 9;
    case FormulaOp::Multiply:
    case FormulaOp::Divide:
    case FormulaOp::Remainder:
        return 10;
    default:
        return kPowerPrecedence;
    }
}

} // namespace

FormulaCompiler::FormulaCompiler(std::string_view text, Arithmetic arithmetic)
    : m_text(text), m_lexer(text, arithmetic)
{
    m_code.arithmetic = arithmetic;
}

VxExpected<FormulaCode> FormulaCompiler::Compile()
{
    if (m_text.size() > kMaxCharacters)
        return VxResult(VxError::InvalidData,
                        "the formula has more than " + std::to_string(kMaxCharacters) + " characters");
    ParseExpression();
    if (!HasFailed() && m_lexer.Token() != FormulaToken::End)
        Fail("an operator is missing");
    if (HasFailed())
        return VxResult(VxError::InvalidData, m_fault);
    return std::move(m_code);
}

// condition ? value : condition ? value : ... value; the chain is walked, not descended.
void FormulaCompiler::ParseExpression()
{
    if (++m_depth > kMaxDepth)
        Fail("the formula is nested too deeply");
    std::vector<std::size_t> ends;
    while (!HasFailed()) {
        ParseBinary(1);
        if (HasFailed() || m_lexer.Token() != FormulaToken::Question)
            break;
        m_lexer.Next();
        const std::size_t otherwise = Emit(FormulaOp::JumpIfZero);
        Pop(1);
        ParseExpression();
        Expect(FormulaToken::Colon, "\":\" is missing");
        ends.push_back(Emit(FormulaOp::Jump));
        Pop(1); // of the two branches only one runs
        JumpHere(otherwise);
    }
    for (const std::size_t end : ends)
        JumpHere(end);
    --m_depth;
}

void FormulaCompiler::ParseBinary(int lowestPrecedence)
{
    ParseUnary();
    while (!HasFailed()) {
        const FormulaToken token = m_lexer.Token();
        const FormulaOp op = m_lexer.Op();
        const int precedence = Precedence(token, op);
        if (precedence == 0 || precedence < lowestPrecedence)
            return;
        m_lexer.Next();
        ParseBinaryRest(token, op, precedence);
    }
}

void FormulaCompiler::ParseBinaryRest(FormulaToken token, FormulaOp op, int precedence)
{
    if (token == FormulaToken::LogicalOr || token == FormulaToken::LogicalAnd) {
        const std::size_t shortcut = Emit(op);
        Pop(1);
        ParseBinary(precedence + 1);
        Emit(FormulaOp::ToBoolean);
        JumpHere(shortcut);
        return;
    }
    if (precedence == kPowerPrecedence) {
        if (++m_depth > kMaxDepth)
            Fail("the formula is nested too deeply");
        else
            ParseBinary(precedence); // binds from the right
        --m_depth;
    } else {
        ParseBinary(precedence + 1);
    }
    Emit(op);
    Pop(1);
}

void FormulaCompiler::ParseUnary()
{
    std::vector<FormulaOp> pending; // outermost first
    while (!HasFailed()) {
        const bool isSign = m_lexer.Token() == FormulaToken::Operator &&
                            (m_lexer.Op() == FormulaOp::Subtract || m_lexer.Op() == FormulaOp::Add);
        if (!isSign && m_lexer.Token() != FormulaToken::Tilde)
            break;
        if (m_lexer.Op() != FormulaOp::Add)
            pending.push_back(isSign ? FormulaOp::Negate : FormulaOp::Complement);
        m_lexer.Next();
    }
    ParseOperand();
    for (; !pending.empty(); pending.pop_back())
        Emit(pending.back());
}

void FormulaCompiler::ParseOperand()
{
    switch (m_lexer.Token()) {
    case FormulaToken::Number:
        EmitLiteral(m_lexer.Value());
        m_lexer.Next();
        return;
    case FormulaToken::Name:
        if (m_lexer.IsCall())
            ParseCall();
        else
            ParseName();
        return;
    case FormulaToken::OpenParenthesis:
        m_lexer.Next();
        ParseExpression();
        Expect(FormulaToken::CloseParenthesis, "\")\" is missing");
        return;
    default:
        Fail("a value is missing");
    }
}

void FormulaCompiler::ParseCall()
{
    const Function* const function = FindFunction(m_lexer.Word());
    if (function == nullptr) {
        Fail("there is no function \"" + std::string(m_lexer.Word()) + "\"");
        return;
    }
    m_lexer.Next();
    m_lexer.Next(); // the parenthesis
    ParseExpression();
    FormulaOp op = function->op;
    if (op == FormulaOp::Round && m_lexer.Token() == FormulaToken::Comma) {
        m_lexer.Next();
        ParseExpression();
        op = FormulaOp::RoundTo;
    }
    Expect(FormulaToken::CloseParenthesis, "\")\" is missing");
    Emit(op);
    if (op == FormulaOp::RoundTo)
        Pop(1);
}

void FormulaCompiler::ParseName()
{
    const std::string_view name = m_lexer.Word();
    const auto found = std::find(m_code.names.begin(), m_code.names.end(), name);
    const auto index = static_cast<std::uint32_t>(found - m_code.names.begin()); // limited by kMaxCharacters
    if (found == m_code.names.end()) {
        if (m_code.names.size() == kMaxNames)
            Fail("there are more than " + std::to_string(kMaxNames) + " names");
        m_code.names.emplace_back(name);
    }
    Emit(FormulaOp::Variable, index);
    Push();
    m_lexer.Next();
}

void FormulaCompiler::Expect(FormulaToken token, std::string_view what)
{
    if (HasFailed())
        return;
    if (m_lexer.Token() != token)
        Fail(what);
    else
        m_lexer.Next();
}

std::size_t FormulaCompiler::Emit(FormulaOp op, std::uint32_t target)
{
    m_code.instructions.push_back({.op = op, .target = target, .literal = {}});
    return m_code.instructions.size() - 1;
}

void FormulaCompiler::EmitLiteral(FormulaValue value)
{
    m_code.instructions.push_back({.op = FormulaOp::Literal, .target = 0, .literal = value});
    Push();
}

void FormulaCompiler::JumpHere(std::size_t instruction)
{
    // Fits: there are not more instructions than characters.
    m_code.instructions[instruction].target = static_cast<std::uint32_t>(m_code.instructions.size());
}

void FormulaCompiler::Push()
{
    ++m_stack;
    m_code.stackSize = std::max(m_code.stackSize, m_stack);
}

void FormulaCompiler::Pop(std::size_t count)
{
    m_stack -= std::min(count, m_stack); // after an error the balance does not matter any more
}

void FormulaCompiler::Fail(std::string_view what)
{
    if (HasFailed())
        return;
    const bool isLong = m_text.size() > kShownCharacters;
    m_fault = "the formula \"" + std::string(m_text.substr(0, kShownCharacters)) + (isLong ? "..." : "") +
              "\" is wrong at character " + std::to_string(m_lexer.Position() + 1) + ": " + std::string(what);
}

} // namespace genapi
