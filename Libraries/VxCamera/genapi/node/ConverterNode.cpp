#include "VxCamera/genapi/node/ConverterNode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "VxCamera/genapi/node/NodeWords.h"

namespace genapi {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

// An end of a type's range says that there is no limit: it is not converted.
bool IsOpenEnd(std::int64_t limit)
{
    return limit == INT64_MIN || limit == INT64_MAX;
}

bool IsOpenEnd(double limit)
{
    // Integers at their ends arrive here as doubles.
    return std::abs(limit) >= kLargest || std::abs(limit) >= static_cast<double>(INT64_MAX);
}

FormulaSet::Input InputOf(double value)
{
    return {.integer = RoundToInteger(value), .number = value};
}

FormulaSet::Input InputOf(std::int64_t value)
{
    return {.integer = value, .number = static_cast<double>(value)};
}

} // namespace

void ConverterNode::Apply(const NodeProperty& property)
{
    switch (property.element) {
    case Element::PValue:
        m_target = property.target;
        return;
    case Element::Slope:
        if (property.text == "Increasing")
            m_slope = Slope::Increasing;
        else
            m_slope = property.text == "Decreasing" ? Slope::Decreasing : Slope::Unknown;
        return;
    case Element::IsLinear:
        m_isLinear = ParseYesNo(property.text).value_or(false);
        return;
    default:
        m_formulas.Apply(property);
    }
}

void ConverterNode::Finish()
{
    if (m_target == nullptr)
        SetFault("it has no pValue");
}

AccessMode ConverterNode::OwnAccess()
{
    if (!IsReadable(m_formulas.Access()))
        return AccessMode::NotAvailable;
    return m_target->Access();
}

// A converter without the formula for one way hands the value on.
VxExpected<std::int64_t> ConverterNode::IntegerFrom(std::int64_t value)
{
    return m_formulas.Has(FormulaSet::Slot::From)
               ? m_formulas.EvaluateInteger(FormulaSet::Slot::From, InputOf(value))
               : VxExpected<std::int64_t>(value);
}

VxExpected<double> ConverterNode::FloatFrom(double value)
{
    return m_formulas.Has(FormulaSet::Slot::From)
               ? m_formulas.EvaluateFloat(FormulaSet::Slot::From, InputOf(value))
               : VxExpected<double>(value);
}

VxExpected<std::int64_t> ConverterNode::DoGetInteger()
{
    if (IsFloat())
        return Node::DoGetInteger();
    const auto value = m_target->GetInteger();
    if (!value)
        return value.Error();
    return IntegerFrom(*value);
}

VxExpected<double> ConverterNode::DoGetFloat()
{
    if (!IsFloat())
        return Node::DoGetFloat();
    const auto value = m_target->GetFloat();
    if (!value)
        return value.Error();
    return FloatFrom(*value);
}

VxResult ConverterNode::DoSetInteger(std::int64_t value)
{
    if (!m_formulas.Has(FormulaSet::Slot::To))
        return m_target->SetInteger(value);
    const auto converted = m_formulas.EvaluateInteger(FormulaSet::Slot::To, InputOf(value));
    return converted ? m_target->SetInteger(*converted) : converted.Error();
}

VxResult ConverterNode::DoSetFloat(double value)
{
    if (!m_formulas.Has(FormulaSet::Slot::To))
        return m_target->SetFloat(value);
    const auto converted = m_formulas.EvaluateFloat(FormulaSet::Slot::To, InputOf(value));
    return converted ? m_target->SetFloat(*converted) : converted.Error();
}

// An end that the formula cannot convert, because it would divide by zero there, is open as well.
VxExpected<std::int64_t> ConverterNode::IntegerEnd(std::int64_t limit, std::int64_t open)
{
    if (IsOpenEnd(limit))
        return open;
    const auto value = IntegerFrom(limit);
    return !value && value.Error().Code() == VxError::InvalidData ? VxExpected<std::int64_t>(open) : value;
}

VxExpected<double> ConverterNode::FloatEnd(double limit, double open)
{
    if (IsOpenEnd(limit))
        return open;
    const auto value = FloatFrom(limit);
    return !value && value.Error().Code() == VxError::InvalidData ? VxExpected<double>(open) : value;
}

VxExpected<IntegerLimits> ConverterNode::DoGetIntegerLimits()
{
    if (IsFloat())
        return Node::DoGetIntegerLimits();
    const auto target = m_target->GetIntegerLimits();
    if (!target)
        return target.Error();
    const bool isSwapped = m_slope == Slope::Decreasing;
    const auto minimum = IntegerEnd(isSwapped ? target->maximum : target->minimum, INT64_MIN);
    const auto maximum = IntegerEnd(isSwapped ? target->minimum : target->maximum, INT64_MAX);
    if (!minimum || !maximum)
        return minimum ? maximum.Error() : minimum.Error();
    IntegerLimits limits{.minimum = *minimum, .maximum = *maximum, .increment = 1};
    const bool isClosed = !IsOpenEnd(limits.minimum) && !IsOpenEnd(limits.maximum);
    if (m_slope == Slope::Unknown && isClosed && limits.minimum > limits.maximum)
        std::swap(limits.minimum, limits.maximum);
    return limits;
}

VxExpected<FloatLimits> ConverterNode::DoGetFloatLimits()
{
    if (!IsFloat())
        return Node::DoGetFloatLimits();
    const auto target = m_target->GetFloatLimits();
    if (!target)
        return target.Error();
    const bool isSwapped = m_slope == Slope::Decreasing;
    const auto minimum = FloatEnd(isSwapped ? target->maximum : target->minimum, -kLargest);
    const auto maximum = FloatEnd(isSwapped ? target->minimum : target->maximum, kLargest);
    if (!minimum || !maximum)
        return minimum ? maximum.Error() : minimum.Error();
    FloatLimits limits{.minimum = *minimum, .maximum = *maximum, .increment = 0};
    const bool isClosed = !IsOpenEnd(limits.minimum) && !IsOpenEnd(limits.maximum);
    if (m_slope == Slope::Unknown && isClosed && limits.minimum > limits.maximum)
        std::swap(limits.minimum, limits.maximum);
    if (m_isLinear && target->increment > 0 && !IsOpenEnd(target->minimum)) {
        const auto first = FloatFrom(target->minimum);
        const auto second = FloatFrom(target->minimum + target->increment);
        if (first && second)
            limits.increment = std::abs(*second - *first);
    }
    return limits;
}

} // namespace genapi
