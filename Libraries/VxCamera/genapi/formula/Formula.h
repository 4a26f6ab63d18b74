#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/genapi/formula/FormulaCode.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace genapi {

/// Where a formula gets the values of its names from; asked only for those that the evaluation really needs.
///
/// Owner:  whoever evaluates, for one call.
/// Thread: the caller's.
class IFormulaVariables {
public:
    IFormulaVariables() = default;
    IFormulaVariables(const IFormulaVariables&) = delete;
    IFormulaVariables& operator=(const IFormulaVariables&) = delete;

    /// @param index  into Formula::Names()
    [[nodiscard]] virtual VxExpected<std::int64_t> IntegerVariable(std::size_t index) = 0;
    [[nodiscard]] virtual VxExpected<double> FloatVariable(std::size_t index) = 0;

protected:
    ~IFormulaVariables() = default;
};

/// An expression of a camera description, compiled once and evaluated as often as wanted.
///
/// In integer arithmetic all values have 64 bits and wrap around, literals lose their fraction and "/"
/// truncates toward zero. In float arithmetic "/" is exact and the bit operators convert their operands to
/// 64-bit integers. Evaluation is iterative: neither its stack nor its time depends on anything but the
/// formula's length.
///
/// Owner:  anybody, by value.
/// Thread: evaluating is const and safe from several threads.
class Formula {
public:
    /// @return  INVALID_DATA with the character at which the text stops making sense
    [[nodiscard]] static VxExpected<Formula> Compile(std::string_view text, Arithmetic arithmetic);

    /// Names that are not functions, each once, in the order of their first use; "PI" and "E" are among them.
    [[nodiscard]] const std::vector<std::string>& Names() const { return m_code.names; }

    /// Number of steps of one evaluation at most.
    [[nodiscard]] std::size_t Length() const { return m_code.instructions.size(); }

    /// Evaluates a formula that was compiled for integer arithmetic.
    /// @return  INVALID_DATA for a division by zero, or what a variable failed with
    [[nodiscard]] VxExpected<std::int64_t> EvaluateInteger(IFormulaVariables& variables) const;

    /// Evaluates a formula that was compiled for float arithmetic.
    /// @return  INVALID_DATA for a division by zero and for a result that is not a number
    [[nodiscard]] VxExpected<double> EvaluateFloat(IFormulaVariables& variables) const;

private:
    explicit Formula(FormulaCode code) : m_code(std::move(code)) {}

    FormulaCode m_code;
};

/// @return  the value of a constant that every formula knows ("PI", "E", in any case)
[[nodiscard]] std::optional<double> BuiltInConstant(std::string_view name);

/// @return  the integer next to zero from `value`; the nearest limit for values beyond 64 bits, 0 for NaN
[[nodiscard]] std::int64_t TruncateToInteger(double value);

/// @return  the nearest integer, halves away from zero; limits and NaN as above
[[nodiscard]] std::int64_t RoundToInteger(double value);

} // namespace genapi
