#include "VxCamera/genapi/node/FloatNode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "VxCamera/genapi/node/TextForm.h"

namespace genapi {

bool FloatNode::IsSinglePrecision() const
{
    // Chosen: longer chains of nodes that only hand a value on have not been seen.
    constexpr int kMaxSteps = 10;
    const Node* target = m_source.FixedTarget();
    for (int step = 0; step < kMaxSteps && dynamic_cast<const FloatNode*>(target) != nullptr; ++step)
        target = target->FixedTarget();
    return target != nullptr && dynamic_cast<const FloatNode*>(target) == nullptr &&
           target->IsSinglePrecision();
}

void FloatNode::Apply(const NodeProperty& property)
{
    if (ApplyLimit(property))
        return;
    const bool isNumber = property.element == Element::Value || property.element == Element::ValueIndexed ||
                          property.element == Element::ValueDefault;
    m_source.Apply(property, isNumber ? FloatOf(property) : std::nullopt);
}

bool FloatNode::ApplyLimit(const NodeProperty& property)
{
    switch (property.element) {
    case Element::Min:
        m_minimum.SetNumber(FloatOf(property));
        return true;
    case Element::Max:
        m_maximum.SetNumber(FloatOf(property));
        return true;
    case Element::Inc:
        m_increment.SetNumber(FloatOf(property));
        return true;
    case Element::PMin:
        m_minimum.SetNode(property.target);
        return true;
    case Element::PMax:
        m_maximum.SetNode(property.target);
        return true;
    case Element::PInc:
        m_increment.SetNode(property.target);
        return true;
    default:
        return false;
    }
}

void FloatNode::Finish()
{
    if (m_source.IsEmpty())
        SetFault("it has neither a value nor a node that gives one");
}

VxResult FloatNode::DoSetFloat(double value)
{
    // An increment that another node brings along is a matter of rounding; one of the feature itself is a
    // promise.
    if (!m_increment.IsEmpty())
        if (VxResult result = CheckIncrement(value); !result.IsOK())
            return result;
    return m_source.Set(*this, Context(), value);
}

VxResult FloatNode::CheckIncrement(double value)
{
    // Chosen: what remains after the division of two numbers that are no exact doubles.
    constexpr double kTolerance = 1e-9;
    const auto limits = DoGetFloatLimits();
    if (!limits || !(limits->increment > 0))
        return VxResult::Ok();
    const double steps = (value - limits->minimum) / limits->increment;
    if (std::abs(steps - std::round(steps)) <= kTolerance * std::max(1.0, std::abs(steps)))
        return VxResult::Ok();
    const auto text = [](double number) { return FloatToText(number, FloatDigits::Double); };
    return Error(VxError::OutOfRange, text(value) + " is not allowed; it must be " + text(limits->minimum) +
                                          " plus a multiple of " + text(limits->increment));
}

VxExpected<FloatLimits> FloatNode::DoGetFloatLimits()
{
    constexpr double kLargest = std::numeric_limits<double>::max();
    FloatLimits limits{.minimum = -kLargest, .maximum = kLargest, .increment = 0};
    if (Node* const target = m_source.Target(*this); target != nullptr)
        if (const auto inherited = target->GetFloatLimits())
            limits = *inherited;
    for (auto [source, limit] :
         {std::pair(&m_minimum, &limits.minimum), std::pair(&m_maximum, &limits.maximum),
          std::pair(&m_increment, &limits.increment)}) {
        if (source->IsEmpty())
            continue;
        const auto value = source->Get();
        if (!value)
            return value.Error();
        *limit = *value;
    }
    return limits;
}

} // namespace genapi
