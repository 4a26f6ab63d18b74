#include "fuzz/FuzzTarget.h"

#include "VxCamera/genapi/formula/Formula.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

/// Values at their limits, each for some name.
class Variables final : public genapi::IFormulaVariables {
public:
    VxExpected<std::int64_t> IntegerVariable(std::size_t index) override
    {
        constexpr std::array<std::int64_t, 6> kValues{
            0, 1, -1, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(), 63};
        return kValues[index % kValues.size()];
    }
    VxExpected<double> FloatVariable(std::size_t index) override
    {
        constexpr std::array kValues{0.0, -0.5, 1e308, -1e308, std::numeric_limits<double>::denorm_min(),
                                     64.0};
        return kValues[index % kValues.size()];
    }
};

void CompileAndEvaluate(fuzz::Bytes bytes)
{
    const std::string_view text = fuzz::TextOf(bytes);
    Variables variables;
    if (const auto formula = genapi::Formula::Compile(text, genapi::Arithmetic::Integer))
        static_cast<void>(formula->EvaluateInteger(variables));
    if (const auto formula = genapi::Formula::Compile(text, genapi::Arithmetic::Float)) {
        const auto value = formula->EvaluateFloat(variables);
        fuzz::Require(!value || !std::isnan(*value), "a formula gave no number");
    }
}

const fuzz::Registration kTarget("formula", CompileAndEvaluate);

} // namespace
