#include "VxCamera/genapi/node/IntegerNode.h"

#include <algorithm>

#include "VxCamera/genapi/node/TextForm.h"
#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {

namespace {

// Chosen: far above the dozens that cameras list.
constexpr std::size_t kMaxValidValues = 10'000;

// Chosen: what fits into a message box.
constexpr std::size_t kMaxValuesShown = 40;

// Chosen: looking at a value costs a fraction of evaluating a node.
constexpr std::size_t kValidValuesPerStep = 64;

} // namespace

void IntegerNode::Apply(const NodeProperty& property)
{
    if (ApplyLimit(property))
        return;
    const bool isNumber = property.element == Element::Value || property.element == Element::ValueIndexed ||
                          property.element == Element::ValueDefault;
    m_source.Apply(property, isNumber ? IntegerOf(property) : std::nullopt);
}

bool IntegerNode::ApplyLimit(const NodeProperty& property)
{
    switch (property.element) {
    case Element::Min:
        m_minimum.SetNumber(IntegerOf(property));
        return true;
    case Element::Max:
        ApplyMaximum(property);
        return true;
    case Element::Inc:
        m_increment.SetNumber(IntegerOf(property));
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
    case Element::ValidValueSet:
        ApplyValidValues(property);
        return true;
    default:
        return false;
    }
}

// Descriptions write "0xFFFFFFFFFFFFFFFF" where they mean that there is no maximum.
void IntegerNode::ApplyMaximum(const NodeProperty& property)
{
    const auto maximum = IntegerOf(property);
    const bool isUnlimited = maximum && *maximum < 0 && !property.text.starts_with('-');
    m_maximum.SetNumber(isUnlimited ? INT64_MAX : maximum);
}

void IntegerNode::ApplyValidValues(const NodeProperty& property)
{
    constexpr std::string_view kSeparators = ";, \t\r\n";
    std::string_view rest = property.text;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of(kSeparators), rest.size());
        if (const auto value = ParseInteger(rest.substr(0, end)))
            m_validValues.push_back(*value);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (m_validValues.size() > kMaxValidValues) {
            SetFault("its ValidValueSet has more than " + std::to_string(kMaxValidValues) + " values");
            return;
        }
    }
}

void IntegerNode::Finish()
{
    if (m_source.IsEmpty())
        SetFault("it has neither a value nor a node that gives one");
}

VxResult IntegerNode::DoSetInteger(std::int64_t value)
{
    Context().Spend(m_validValues.size() / kValidValuesPerStep);
    if (!m_validValues.empty() && std::ranges::find(m_validValues, value) == m_validValues.end())
        return Error(VxError::OutOfRange, IntegerToText(value, Info().representation) +
                                              " is not allowed; it must be one of" + KnownValues());
    return m_source.Set(*this, Context(), value);
}

std::string IntegerNode::KnownValues() const
{
    std::string text;
    const std::size_t shown = std::min(m_validValues.size(), kMaxValuesShown);
    for (std::size_t i = 0; i < shown; ++i)
        text += " " + IntegerToText(m_validValues[i], Info().representation);
    if (shown < m_validValues.size())
        text += " and " + std::to_string(m_validValues.size() - shown) + " more";
    return text;
}

VxExpected<IntegerLimits> IntegerNode::DoGetIntegerLimits()
{
    IntegerLimits limits;
    const bool isComplete = !m_minimum.IsEmpty() && !m_maximum.IsEmpty() && !m_increment.IsEmpty();
    if (Node* const target = isComplete ? nullptr : m_source.Target(*this); target != nullptr)
        if (const auto inherited = target->GetIntegerLimits())
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
    limits.increment = std::max<std::int64_t>(limits.increment, 1);
    return limits;
}

} // namespace genapi
