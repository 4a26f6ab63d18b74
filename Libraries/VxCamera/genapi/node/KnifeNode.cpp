#include "VxCamera/genapi/node/KnifeNode.h"

#include <limits>

namespace genapi {

void KnifeNode::Finish()
{
    if (!m_formulas.Has(FormulaSet::Slot::Value))
        SetFault("it has no Formula");
}

VxExpected<std::int64_t> KnifeNode::DoGetInteger()
{
    if (Info().type == ValueType::Float)
        return Node::DoGetInteger();
    return m_formulas.EvaluateInteger(FormulaSet::Slot::Value, {});
}

VxResult KnifeNode::DoSetInteger(std::int64_t)
{
    return Error(VxError::NotWritable, "it is computed and cannot be written");
}

VxExpected<IntegerLimits> KnifeNode::DoGetIntegerLimits()
{
    return IntegerLimits{};
}

VxExpected<double> KnifeNode::DoGetFloat()
{
    if (Info().type != ValueType::Float)
        return Node::DoGetFloat();
    return m_formulas.EvaluateFloat(FormulaSet::Slot::Value, {});
}

VxResult KnifeNode::DoSetFloat(double)
{
    return Error(VxError::NotWritable, "it is computed and cannot be written");
}

VxExpected<FloatLimits> KnifeNode::DoGetFloatLimits()
{
    constexpr double kLargest = std::numeric_limits<double>::max();
    return FloatLimits{.minimum = -kLargest, .maximum = kLargest, .increment = 0};
}

} // namespace genapi
