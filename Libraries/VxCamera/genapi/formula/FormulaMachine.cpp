#include "VxCamera/genapi/formula/FormulaMachine.h"

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "VxCamera/genapi/formula/Formula.h"

namespace genapi {

namespace {

VxResult DivisionByZero()
{
    return VxResult(VxError::InvalidData, "its formula divides by zero");
}

// Two's complement arithmetic that wraps around: what the camera's own 64-bit registers would do.
constexpr std::int64_t Wrap(std::uint64_t value)
{
    return static_cast<std::int64_t>(value);
}

constexpr std::uint64_t Bits(std::int64_t value)
{
    return static_cast<std::uint64_t>(value);
}

constexpr std::int64_t kIntegerBits = 64;

std::int64_t ShiftLeft(std::int64_t value, std::int64_t count)
{
    return count < 0 || count >= kIntegerBits ? 0 : Wrap(Bits(value) << count);
}

std::int64_t ShiftRight(std::int64_t value, std::int64_t count)
{
    return count < 0 || count >= kIntegerBits ? 0 : value >> count;
}

VxExpected<std::int64_t> IntegerPower(std::int64_t base, std::int64_t exponent)
{
    if (exponent < 0) { // the reciprocal, truncated
        if (base == 0)
            return DivisionByZero();
        if (base == 1)
            return std::int64_t{1};
        return std::int64_t{base != -1 ? 0 : (exponent % 2 == 0 ? 1 : -1)};
    }
    std::uint64_t result = 1;
    for (std::uint64_t square = Bits(base); exponent != 0; exponent >>= 1, square *= square)
        if ((exponent & 1) != 0)
            result *= square;
    return Wrap(result);
}

/// Functions of one operand.
double ApplyFunction(FormulaOp op, double x)
{
    switch (op) {
    case FormulaOp::Sin:
        return std::sin(x);
    case FormulaOp::Cos:
        return std::cos(x);
    case FormulaOp::Tan:
        return std::tan(x);
    case FormulaOp::Asin:
        return std::asin(x);
    case FormulaOp::Acos:
        return std::acos(x);
    case FormulaOp::Atan:
        return std::atan(x);
    case FormulaOp::Abs:
        return std::abs(x);
    case FormulaOp::Exp:
        return std::exp(x);
    case FormulaOp::Ln:
        return std::log(x);
    case FormulaOp::Lg:
        return std::log10(x);
    case FormulaOp::Sqrt:
        return std::sqrt(x);
    case FormulaOp::Trunc:
        return std::trunc(x);
    case FormulaOp::Round:
        return std::round(x);
    case FormulaOp::Floor:
        return std::floor(x);
    case FormulaOp::Ceil:
        return std::ceil(x);
    case FormulaOp::Sign:
        return x > 0 ? 1 : (x < 0 ? -1 : 0);
    default:
        return x;
    }
}

/// What the two arithmetics do differently.
struct IntegerMachine {
    using Type = std::int64_t;

    static Type& Of(FormulaValue& value) { return value.integer; }
    static VxExpected<Type> Variable(IFormulaVariables& variables, std::size_t index)
    {
        return variables.IntegerVariable(index);
    }
    static std::int64_t Integer(Type value) { return value; }
    static Type FromInteger(std::int64_t value) { return value; }
    static Type Negate(Type x) { return Wrap(0 - Bits(x)); }

    static Type Function(FormulaOp op, Type x)
    {
        switch (op) {
        case FormulaOp::Abs:
            return x < 0 ? Negate(x) : x;
        case FormulaOp::Trunc:
        case FormulaOp::Round:
        case FormulaOp::Floor:
        case FormulaOp::Ceil:
            return x;
        case FormulaOp::Sign:
            return x > 0 ? 1 : (x < 0 ? -1 : 0);
        default:
            return TruncateToInteger(ApplyFunction(op, static_cast<double>(x)));
        }
    }

    static VxExpected<Type> Arithmetic(FormulaOp op, Type a, Type b)
    {
        switch (op) {
        case FormulaOp::Add:
            return Wrap(Bits(a) + Bits(b));
        case FormulaOp::Subtract:
            return Wrap(Bits(a) - Bits(b));
        case FormulaOp::Multiply:
            return Wrap(Bits(a) * Bits(b));
        case FormulaOp::Power:
            return IntegerPower(a, b);
        case FormulaOp::RoundTo:
            return a;
        default:
            break;
        }
        if (b == 0)
            return DivisionByZero();
        if (b == -1) // the smallest integer has no opposite: the division itself would trap
            return op == FormulaOp::Divide ? Negate(a) : Type{0};
        return op == FormulaOp::Divide ? a / b : a % b;
    }
};

struct FloatMachine {
    using Type = double;

    static Type& Of(FormulaValue& value) { return value.number; }
    static VxExpected<Type> Variable(IFormulaVariables& variables, std::size_t index)
    {
        return variables.FloatVariable(index);
    }
    static std::int64_t Integer(Type value) { return TruncateToInteger(value); }
    static Type FromInteger(std::int64_t value) { return static_cast<Type>(value); }
    static Type Negate(Type x) { return -x; }
    static Type Function(FormulaOp op, Type x) { return ApplyFunction(op, x); }

    static VxExpected<Type> Arithmetic(FormulaOp op, Type a, Type b)
    {
        switch (op) {
        case FormulaOp::Add:
            return a + b;
        case FormulaOp::Subtract:
            return a - b;
        case FormulaOp::Multiply:
            return a * b;
        case FormulaOp::Power:
            return std::pow(a, b);
        case FormulaOp::RoundTo:
            return RoundToDecimals(a, b);
        default:
            break;
        }
        if (b == 0)
            return DivisionByZero();
        return op == FormulaOp::Divide ? a / b : std::fmod(a, b);
    }

    static Type RoundToDecimals(Type value, Type decimals)
    {
        const Type scale = std::pow(Type{10}, std::trunc(decimals));
        const Type scaled = value * scale;
        // Beyond the range of a double there is nothing left to round.
        return std::isfinite(scaled) && scale != 0 ? std::round(scaled) / scale : value;
    }
};

/// Comparisons and bit operators; the same in both arithmetics apart from the type of their operands.
template <typename Machine>
VxExpected<typename Machine::Type> Binary(FormulaOp op, typename Machine::Type a, typename Machine::Type b)
{
    switch (op) {
    case FormulaOp::Equal:
        return Machine::FromInteger(a == b ? 1 : 0);
    case FormulaOp::NotEqual:
        return Machine::FromInteger(a != b ? 1 : 0);
    case FormulaOp::Less:
        return Machine::FromInteger(a < b ? 1 : 0);
    case FormulaOp::LessOrEqual:
        return Machine::FromInteger(a <= b ? 1 : 0);
    case FormulaOp::Greater:
        return Machine::FromInteger(a > b ? 1 : 0);
    case FormulaOp::GreaterOrEqual:
        return Machine::FromInteger(a >= b ? 1 : 0);
    case FormulaOp::BitOr:
        return Machine::FromInteger(Machine::Integer(a) | Machine::Integer(b));
    case FormulaOp::BitXor:
        return Machine::FromInteger(Machine::Integer(a) ^ Machine::Integer(b));
    case FormulaOp::BitAnd:
        return Machine::FromInteger(Machine::Integer(a) & Machine::Integer(b));
    case FormulaOp::ShiftLeft:
        return Machine::FromInteger(ShiftLeft(Machine::Integer(a), Machine::Integer(b)));
    case FormulaOp::ShiftRight:
        return Machine::FromInteger(ShiftRight(Machine::Integer(a), Machine::Integer(b)));
    default:
        return Machine::Arithmetic(op, a, b);
    }
}

template <typename Machine>
typename Machine::Type Unary(FormulaOp op, typename Machine::Type x)
{
    switch (op) {
    case FormulaOp::ToBoolean:
        return Machine::FromInteger(x != 0 ? 1 : 0);
    case FormulaOp::Negate:
        return Machine::Negate(x);
    case FormulaOp::Complement:
        return Machine::FromInteger(~Machine::Integer(x));
    default:
        return Machine::Function(op, x);
    }
}

bool IsBinary(FormulaOp op)
{
    return (op >= FormulaOp::BitOr && op <= FormulaOp::Power) || op == FormulaOp::RoundTo;
}

/// The stack of values and the place in the code.
///
/// Owner:  Run, for one call. Borrows the code, the variables and the memory of the stack.
/// Thread: one.
template <typename Machine>
class Runner {
public:
    Runner(const FormulaCode& code, IFormulaVariables& variables, FormulaValue* stack)
        : m_code(code), m_variables(variables), m_top(stack - 1)
    {
    }

    VxResult Run()
    {
        while (m_place < m_code.instructions.size()) {
            const FormulaInstruction& instruction = m_code.instructions[m_place++];
            if (instruction.op <= FormulaOp::Or) {
                if (!Control(instruction))
                    return m_fault;
            } else if (!IsBinary(instruction.op)) {
                Machine::Of(*m_top) = Unary<Machine>(instruction.op, Machine::Of(*m_top));
            } else {
                const auto value =
                    Binary<Machine>(instruction.op, Machine::Of(m_top[-1]), Machine::Of(*m_top));
                if (!value)
                    return value.Error();
                Machine::Of(*--m_top) = *value;
            }
        }
        return VxResult::Ok();
    }

private:
    /// @return  false when a variable failed
    bool Control(const FormulaInstruction& instruction)
    {
        switch (instruction.op) {
        case FormulaOp::Literal:
            *++m_top = instruction.literal;
            return true;
        case FormulaOp::Variable:
            return Load(instruction.target);
        case FormulaOp::Jump:
            m_place = instruction.target;
            return true;
        case FormulaOp::JumpIfZero:
            if (Machine::Of(*m_top--) == 0)
                m_place = instruction.target;
            return true;
        default: // And, Or
            break;
        }
        const bool isTrue = Machine::Of(*m_top) != 0;
        if (isTrue == (instruction.op == FormulaOp::Or)) {
            Machine::Of(*m_top) = Machine::FromInteger(isTrue ? 1 : 0);
            m_place = instruction.target;
        } else {
            --m_top;
        }
        return true;
    }

    bool Load(std::size_t index)
    {
        const auto value = Machine::Variable(m_variables, index);
        if (!value) {
            m_fault = value.Error();
            return false;
        }
        Machine::Of(*++m_top) = *value;
        return true;
    }

    const FormulaCode& m_code;
    IFormulaVariables& m_variables;
    FormulaValue* m_top; // the last value pushed
    std::size_t m_place = 0;
    VxResult m_fault;
};

} // namespace

VxExpected<FormulaValue> RunFormula(const FormulaCode& code, IFormulaVariables& variables)
{
    // Chosen: enough for every formula seen; larger ones take their stack from the heap. Element 0 stays
    // unused, so that the empty stack has a place to point to.
    std::array<FormulaValue, 33> small{};
    std::vector<FormulaValue> large;
    FormulaValue* stack = small.data();
    if (code.stackSize >= small.size()) {
        large.resize(code.stackSize + 1);
        stack = large.data();
    }
    const VxResult result = code.arithmetic == Arithmetic::Integer
                                ? Runner<IntegerMachine>(code, variables, stack + 1).Run()
                                : Runner<FloatMachine>(code, variables, stack + 1).Run();
    if (!result.IsOK())
        return result;
    return stack[1]; // every formula leaves exactly one value
}

} // namespace genapi
