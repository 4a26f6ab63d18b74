#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace genapi {

enum class Arithmetic : std::uint8_t { Integer, Float };

/// One step of a compiled formula; values live on a stack.
enum class FormulaOp : std::uint8_t {
    Literal,    ///< push the literal
    Variable,   ///< push the variable with index `target`
    Jump,       ///< go on at `target`
    JumpIfZero, ///< pop; go on at `target` if it was 0
    And,        ///< if the top is 0 go on at `target`, else pop it
    Or,         ///< if the top is not 0 make it 1 and go on at `target`, else pop it
    ToBoolean,  ///< the top becomes 0 or 1
    BitOr,
    BitXor,
    BitAnd,
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    ShiftLeft,
    ShiftRight,
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    Power,
    Negate,
    Complement,
    Sin,
    Cos,
    Tan,
    Asin,
    Acos,
    Atan,
    Abs,
    Exp,
    Ln,
    Lg,
    Sqrt,
    Trunc,
    Round,
    RoundTo, ///< two operands: value, number of decimals
    Floor,
    Ceil,
    Sign,
};

/// A value in the arithmetic of its formula.
union FormulaValue {
    std::int64_t integer;
    double number;
};

struct FormulaInstruction {
    FormulaOp op = FormulaOp::Literal;
    std::uint32_t target = 0;
    FormulaValue literal{};
};

struct FormulaCode {
    Arithmetic arithmetic = Arithmetic::Integer;
    std::vector<FormulaInstruction> instructions;
    std::vector<std::string> names;
    std::size_t stackSize = 0; ///< values on the stack at most
};

} // namespace genapi
