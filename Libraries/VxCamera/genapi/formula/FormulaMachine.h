#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/genapi/formula/FormulaCode.h"

namespace genapi {

class IFormulaVariables;

/// Runs a compiled formula to its end.
/// @return  INVALID_DATA for a division by zero, or what a variable failed with
[[nodiscard]] VxExpected<FormulaValue> RunFormula(const FormulaCode& code, IFormulaVariables& variables);

} // namespace genapi
