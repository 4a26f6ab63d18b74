#include "VxCamera/genapi/node/Node.h"

#include <algorithm>
#include <cmath>

#include "VxCamera/genapi/formula/Formula.h"
#include "VxCamera/genapi/node/NodeWords.h"
#include "VxCamera/genapi/node/TextForm.h"
#include "VxCamera/genapi/xml/ElementNames.h"
#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {

namespace {

// 2^63: doubles from here on are no 64-bit integers.
constexpr double kIntegerLimit = 9223372036854775808.0;

// Chosen: limits that a formula computed differ from what the user copied from a display in the last digits.
constexpr double kFloatTolerance = 1e-9;

/// References without which a node still has its value.
bool IsOptional(Element element)
{
    switch (element) {
    case Element::PAlias:
    case Element::PCastAlias:
    case Element::PBlockPolling:
    case Element::PError:
    case Element::PInvalidator:
    case Element::PFeature:
    case Element::PSelected:
    case Element::PValueCopy:
    case Element::EnumEntry:
        return true;
    default:
        return false;
    }
}

bool IsAnInteger(double value)
{
    return value >= -kIntegerLimit && value < kIntegerLimit; // false for NaN
}

/// A condition that cannot be read does not hold.
bool IsTrue(Node& condition)
{
    if (!condition.CanBeRead())
        return false;
    if (condition.Info().type == ValueType::Float)
        return condition.GetFloat().ValueOr(0) != 0;
    return condition.GetInteger().ValueOr(0) != 0;
}

std::string Quoted(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

} // namespace

Node::Node(NodeContext& context, NodeId id, ValueType type, std::string_view name)
    : m_context(context), m_id(id)
{
    m_info.name = name;
    m_info.displayName = name;
    m_info.type = type;
}

void Node::Configure(std::span<const Property> properties, const NodeTable& nodes)
{
    const auto find = [&](std::uint32_t index) { return index == kNoNode ? nullptr : nodes[index].get(); };
    for (const Property& property : properties) {
        if (property.text.empty()) // the same as none
            continue;
        const NodeProperty applied{.element = property.element,
                                   .text = property.text,
                                   .argument = property.argument,
                                   .target = find(property.target),
                                   .argumentTarget = find(property.argumentTarget)};
        const bool isLost = (IsReference(property.element) && applied.target == nullptr) ||
                            (property.element == Element::PIndexOffset && applied.argumentTarget == nullptr);
        // The port of the camera itself needs no node of its own.
        const bool isDevice = property.element == Element::PPort && property.text == "Device";
        if (isLost && IsOptional(property.element))
            continue;
        if (isLost && !isDevice)
            SetFault("its " + std::string(NameOf(property.element)) + " names the node " +
                     Quoted(applied.target == nullptr ? property.text : property.argument) +
                     ", which the camera's description does not have");
        else if (!ApplyCommon(applied))
            Apply(applied);
    }
    Finish();
}

void Node::Apply(const NodeProperty&) {}

bool Node::ApplyCommon(const NodeProperty& property)
{
    switch (property.element) {
    case Element::ImposedAccessMode:
        m_imposedAccess = ParseAccessMode(property.text).value_or(m_imposedAccess);
        return true;
    case Element::Visibility:
        m_info.visibility = ParseVisibility(property.text).value_or(m_info.visibility);
        return true;
    case Element::Streamable:
        m_info.isStreamable = ParseYesNo(property.text).value_or(false);
        return true;
    case Element::IsDeprecated:
        m_info.isDeprecated = ParseYesNo(property.text).value_or(false);
        return true;
    case Element::PollingTime:
        ApplyPolling(property);
        return true;
    case Element::EventId:
        ApplyEventId(property);
        return true;
    default:
        return IsReference(property.element) ? ApplyCommonReference(property) : ApplyDisplay(property);
    }
}

bool Node::ApplyCommonReference(const NodeProperty& property)
{
    switch (property.element) {
    case Element::PIsImplemented:
        m_isImplemented = property.target;
        return true;
    case Element::PIsAvailable:
        m_isAvailable = property.target;
        return true;
    case Element::PIsLocked:
        m_isLocked = property.target;
        return true;
    case Element::PBlockPolling:
        m_pollingBlock = property.target;
        return true;
    case Element::PError:
        m_errors.push_back(property.target);
        return true;
    case Element::PAlias:
        m_alias = property.target;
        return true;
    case Element::PCastAlias:
        m_castAlias = property.target;
        return true;
    default:
        return false;
    }
}

bool Node::ApplyDisplay(const NodeProperty& property)
{
    switch (property.element) {
    case Element::ToolTip:
        m_info.toolTip = property.text;
        return true;
    case Element::Description:
        m_info.description = property.text;
        return true;
    case Element::DisplayName:
        m_info.displayName = property.text;
        return true;
    case Element::DocuUrl:
        m_info.docuUrl = property.text;
        return true;
    case Element::Unit:
        m_info.unit = property.text;
        return true;
    case Element::Representation:
        m_info.representation = ParseRepresentation(property.text).value_or(m_info.representation);
        return true;
    case Element::DisplayNotation:
        m_info.displayNotation = ParseDisplayNotation(property.text);
        return true;
    case Element::DisplayPrecision:
        m_info.displayPrecision = ParseInteger(property.text);
        return true;
    default:
        return false;
    }
}

void Node::ApplyPolling(const NodeProperty& property)
{
    const auto milliseconds = IntegerOf(property);
    if (milliseconds && *milliseconds > 0)
        m_pollingMs = static_cast<std::uint32_t>(std::min<std::int64_t>(*milliseconds, UINT32_MAX));
}

void Node::ApplyEventId(const NodeProperty& property)
{
    m_eventId = ParseHexadecimal(property.text);
    if (!m_eventId)
        SetFault("its EventID " + Quoted(property.text) + " is no hexadecimal number");
}

AccessMode Node::FindAccess(Locks locks)
{
    const EvaluationScope scope(m_context);
    if (!m_fault.empty())
        return AccessMode::NotImplemented;
    if (!scope.IsAllowed())
        return AccessMode::NotAvailable;
    if (m_isFindingAccess) // the conditions of two nodes lead to each other: here they end
        return m_imposedAccess;
    KnownAccess& known = locks == Locks::Asked ? m_access : m_unlockedAccess;
    if (known.epoch != m_context.Epoch()) {
        m_isFindingAccess = true;
        const AccessMode mode = ComputeAccess(locks);
        m_isFindingAccess = false;
        known = {.epoch = m_context.Epoch(), .mode = mode};
    }
    return known.mode;
}

AccessMode Node::ComputeAccess(Locks locks)
{
    if (m_isImplemented != nullptr && !IsTrue(*m_isImplemented))
        return AccessMode::NotImplemented;
    if (m_isAvailable != nullptr && !IsTrue(*m_isAvailable))
        return AccessMode::NotAvailable;
    const AccessMode mode = Combine(OwnAccess(), m_imposedAccess);
    // A lock that cannot be read does not lock: the camera still refuses by itself.
    if (locks == Locks::LeftOut || !IsWritable(mode) || m_isLocked == nullptr || !IsTrue(*m_isLocked))
        return mode;
    m_context.SetLock(m_isLocked->Info().name);
    return IsReadable(mode) ? AccessMode::ReadOnly : AccessMode::NotAvailable;
}

VxExpected<std::int64_t> Node::GetInteger()
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return DoGetInteger();
}

VxResult Node::SetInteger(std::int64_t value)
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    if (m_info.type == ValueType::Float)
        return SetFloat(static_cast<double>(value));
    if (m_info.type == ValueType::Integer)
        if (VxResult result = CheckInteger(value); !result.IsOK())
            return result;
    return Verified(DoSetInteger(value));
}

VxExpected<IntegerLimits> Node::GetIntegerLimits()
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return DoGetIntegerLimits();
}

VxExpected<double> Node::GetFloat()
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return DoGetFloat();
}

VxResult Node::SetFloat(double value)
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    if (m_info.type == ValueType::Enumeration)
        return Verified(DoSetFloat(value));
    if (HoldsInteger())
        return SetRounded(value);
    if (m_info.type != ValueType::Float)
        return AskCastAlias([&](Node& other) { return other.SetFloat(value); }, "number");
    const auto checked = CheckFloat(value);
    return checked ? Verified(DoSetFloat(*checked)) : checked.Error();
}

VxResult Node::SetRounded(double value)
{
    if (!IsAnInteger(std::round(value)))
        return Error(VxError::OutOfRange, FloatToText(value, FloatDigits::Double) + " is no 64-bit integer");
    return SetInteger(RoundToInteger(value));
}

VxResult Node::Verified(VxResult result)
{
    for (Node* const error : m_errors) {
        if (!result.IsOK())
            break;
        m_context.Listener().Forget(*error);
        const std::int64_t number = error->GetInteger().ValueOr(0); // 0: what cameras call no error
        if (number == 0)
            continue;
        const std::string_view name = error->NameOfNumber(number);
        result = Error(VxError::CameraError,
                       "the camera has taken it, and tells of an error: " + Quoted(error->Info().name) +
                           " is " + (name.empty() ? std::to_string(number) : std::string(name)));
    }
    return result;
}

VxExpected<FloatLimits> Node::GetFloatLimits()
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return DoGetFloatLimits();
}

VxExpected<std::string> Node::GetString()
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return DoGetString();
}

VxResult Node::SetString(std::string_view value)
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return Verified(DoSetString(value));
}

VxExpected<std::vector<std::byte>> Node::GetBytes()
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return DoGetBytes();
}

VxResult Node::SetBytes(std::span<const std::byte> bytes)
{
    const EvaluationScope scope(m_context);
    if (!scope.IsAllowed() || !m_fault.empty())
        return Blocked();
    return Verified(DoSetBytes(bytes));
}

VxResult Node::Error(VxError code, std::string_view text) const
{
    std::string description(m_info.name);
    description += ": ";
    description += text;
    return VxResult(code, description);
}

bool Node::HoldsInteger() const
{
    return m_info.type == ValueType::Integer || m_info.type == ValueType::Boolean ||
           m_info.type == ValueType::Enumeration;
}

VxExpected<std::int64_t> Node::DoGetInteger()
{
    if (m_info.type != ValueType::Float)
        return AskCastAlias([](Node& other) { return other.GetInteger(); }, "number");
    const auto value = DoGetFloat();
    if (!value)
        return value.Error();
    if (!IsAnInteger(std::round(*value)))
        return Error(VxError::OutOfRange, FloatToText(*value, FloatDigits::Double) + " is no 64-bit integer");
    return RoundToInteger(*value);
}

VxResult Node::DoSetInteger(std::int64_t value)
{
    return AskCastAlias([&](Node& other) { return other.SetInteger(value); }, "number that can be written");
}

VxExpected<IntegerLimits> Node::DoGetIntegerLimits()
{
    if (m_info.type != ValueType::Float)
        return AskCastAlias([](Node& other) { return other.GetIntegerLimits(); }, "number with limits");
    const auto limits = DoGetFloatLimits();
    if (!limits)
        return limits.Error();
    return IntegerLimits{.minimum = TruncateToInteger(std::ceil(limits->minimum)),
                         .maximum = TruncateToInteger(std::floor(limits->maximum)),
                         .increment = 1};
}

VxExpected<double> Node::DoGetFloat()
{
    if (!HoldsInteger())
        return AskCastAlias([](Node& other) { return other.GetFloat(); }, "number");
    const auto value = DoGetInteger();
    if (!value)
        return value.Error();
    return static_cast<double>(*value);
}

VxResult Node::DoSetFloat(double)
{
    return WrongType("number that can be written");
}

VxExpected<FloatLimits> Node::DoGetFloatLimits()
{
    if (!HoldsInteger())
        return AskCastAlias([](Node& other) { return other.GetFloatLimits(); }, "number with limits");
    const auto limits = DoGetIntegerLimits();
    if (!limits)
        return limits.Error();
    return FloatLimits{.minimum = static_cast<double>(limits->minimum),
                       .maximum = static_cast<double>(limits->maximum),
                       .increment = static_cast<double>(limits->increment)};
}

void Node::InheritDisplay()
{
    // Chosen: longer chains of nodes that only hand a value on have not been seen.
    constexpr int kMaxSteps = 10;
    const Node* source = FixedTarget();
    for (int step = 0; step < kMaxSteps && source != nullptr; ++step, source = source->FixedTarget()) {
        if (m_info.representation == Representation::Unspecified)
            m_info.representation = source->m_info.representation;
        if (m_info.unit.empty())
            m_info.unit = source->m_info.unit;
        if (!m_info.displayNotation)
            m_info.displayNotation = source->m_info.displayNotation;
        if (!m_info.displayPrecision)
            m_info.displayPrecision = source->m_info.displayPrecision;
    }
}

VxExpected<std::string> Node::DoGetString()
{
    return AskCastAlias([](Node& other) { return other.GetString(); }, "text");
}

VxResult Node::DoSetString(std::string_view value)
{
    return AskCastAlias([&](Node& other) { return other.SetString(value); }, "text");
}

VxExpected<std::vector<std::byte>> Node::DoGetBytes()
{
    return AskCastAlias([](Node& other) { return other.GetBytes(); }, "register");
}

VxResult Node::DoSetBytes(std::span<const std::byte> bytes)
{
    return AskCastAlias([&](Node& other) { return other.SetBytes(bytes); }, "register");
}

void Node::SetFault(std::string text)
{
    if (m_fault.empty())
        m_fault = std::move(text);
}

std::optional<std::int64_t> Node::IntegerOf(const NodeProperty& property)
{
    const auto value = ParseInteger(property.text);
    if (!value)
        SetFault("its " + std::string(NameOf(property.element)) + " " + Quoted(property.text) +
                 " is no integer");
    return value;
}

std::optional<double> Node::FloatOf(const NodeProperty& property)
{
    const auto value = ParseFloat(property.text);
    if (!value)
        SetFault("its " + std::string(NameOf(property.element)) + " " + Quoted(property.text) +
                 " is no number");
    return value;
}

VxResult Node::Blocked() const
{
    if (!m_fault.empty())
        return Error(VxError::InvalidData, m_fault);
    return Error(
        VxError::InvalidData,
        "it cannot be computed: in the camera's description it refers to itself, or to too many others");
}

VxResult Node::WrongType(std::string_view wanted) const
{
    return Error(VxError::TypeMismatch, "it is no " + std::string(wanted));
}

// Limits that cannot be read or contradict themselves do not limit: the camera has the last word.
VxResult Node::CheckInteger(std::int64_t value)
{
    const auto limits = DoGetIntegerLimits();
    if (!limits || limits->minimum > limits->maximum)
        return VxResult::Ok();
    const auto text = [&](std::int64_t number) { return IntegerToText(number, m_info.representation); };
    if (value < limits->minimum || value > limits->maximum)
        return Error(VxError::OutOfRange, text(value) + " is out of range; it must be from " +
                                              text(limits->minimum) + " to " + text(limits->maximum));
    if (limits->increment > 1) {
        // The difference of two 64-bit integers needs 64 bits without sign.
        const std::uint64_t distance =
            static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(limits->minimum);
        if (distance % static_cast<std::uint64_t>(limits->increment) != 0)
            return Error(VxError::OutOfRange, text(value) + " is not allowed; it must be " +
                                                  text(limits->minimum) + " plus a multiple of " +
                                                  text(limits->increment));
    }
    return VxResult::Ok();
}

// Values that miss a limit by less than the tolerance are moved onto it.
VxExpected<double> Node::CheckFloat(double value)
{
    if (std::isnan(value))
        return Error(VxError::OutOfRange, "the value is not a number");
    const auto limits = DoGetFloatLimits();
    if (!limits || !(limits->minimum <= limits->maximum))
        return value;
    const auto isPast = [](double distance, double limit) {
        return distance > kFloatTolerance * std::abs(limit);
    };
    const auto text = [](double number) { return FloatToText(number, FloatDigits::Double); };
    const bool isBelow = value < limits->minimum;
    const bool isAbove = value > limits->maximum;
    if ((isBelow && isPast(limits->minimum - value, limits->minimum)) ||
        (isAbove && isPast(value - limits->maximum, limits->maximum)))
        return Error(VxError::OutOfRange, text(value) + " is out of range; it must be from " +
                                              text(limits->minimum) + " to " + text(limits->maximum));
    return std::clamp(value, limits->minimum, limits->maximum);
}

} // namespace genapi
