#include "VxCamera/genapi/formula/Formula.h"

#include <cmath>
#include <numbers>

#include "VxCamera/genapi/formula/FormulaCompiler.h"
#include "VxCamera/genapi/formula/FormulaMachine.h"

namespace genapi {

namespace {

// 2^63, the first double beyond the 64-bit integers.
constexpr double kIntegerLimit = 9223372036854775808.0;

std::int64_t ToInteger(double whole)
{
    if (std::isnan(whole))
        return 0;
    if (whole >= kIntegerLimit)
        return INT64_MAX;
    if (whole < -kIntegerLimit)
        return INT64_MIN;
    return static_cast<std::int64_t>(whole);
}

} // namespace

VxExpected<Formula> Formula::Compile(std::string_view text, Arithmetic arithmetic)
{
    auto code = FormulaCompiler(text, arithmetic).Compile();
    if (!code)
        return code.Error();
    return Formula(*std::move(code));
}

VxExpected<std::int64_t> Formula::EvaluateInteger(IFormulaVariables& variables) const
{
    const auto value = RunFormula(m_code, variables);
    if (!value)
        return value.Error();
    return value->integer;
}

VxExpected<double> Formula::EvaluateFloat(IFormulaVariables& variables) const
{
    const auto value = RunFormula(m_code, variables);
    if (!value)
        return value.Error();
    if (std::isnan(value->number))
        return VxResult(VxError::InvalidData, "the result of its formula is not a number");
    return value->number;
}

std::optional<double> BuiltInConstant(std::string_view name)
{
    if (name == "PI" || name == "pi" || name == "Pi")
        return std::numbers::pi;
    if (name == "E" || name == "e")
        return std::numbers::e;
    return std::nullopt;
}

std::int64_t TruncateToInteger(double value)
{
    return ToInteger(std::trunc(value));
}

std::int64_t RoundToInteger(double value)
{
    return ToInteger(std::round(value));
}

} // namespace genapi
