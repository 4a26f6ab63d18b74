#include "VxCamera/genapi/node/FormulaSet.h"

#include <algorithm>

#include "VxCamera/genapi/node/EnumerationNode.h"
#include "VxCamera/genapi/node/RegisterNode.h"
#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {

namespace {

constexpr std::string_view kInputNames[] = {"TO", "FROM"};

} // namespace

/// What a name in a formula stands for.
struct FormulaSet::Binding {
    enum class Kind : std::uint8_t { Input, Node, Number, SubFormula };

    Kind kind = Kind::Input;
    Node* node = nullptr; // borrowed from the map
    Aspect aspect = Aspect::Value;
    std::string entryName{};              // of Aspect::Entry
    const EnumEntryNode* entry = nullptr; // likewise; null: the enumeration does not have it
    std::int64_t integer = 0;
    double number = 0;
    FormulaSet::SubFormula* subFormula = nullptr; // borrowed from the set
};

struct FormulaSet::Compiled {
    Formula formula;
    std::vector<Binding> bindings; // by index of the formula's names
};

struct FormulaSet::SubFormula {
    std::string_view name;
    std::string_view text;
    std::unique_ptr<Compiled> compiled;
};

/// Gives one evaluation its values.
class FormulaSet::Evaluation final : public IFormulaVariables {
public:
    Evaluation(FormulaSet& set, const Compiled& compiled, const Input& input)
        : m_set(set), m_compiled(compiled), m_input(input)
    {
    }

    VxExpected<std::int64_t> IntegerVariable(std::size_t index) override
    {
        return Value<std::int64_t>(m_compiled.bindings[index]);
    }
    VxExpected<double> FloatVariable(std::size_t index) override
    {
        return Value<double>(m_compiled.bindings[index]);
    }

    template <typename T>
    VxExpected<T> Run()
    {
        m_set.m_context.Spend(m_compiled.formula.Length());
        if constexpr (std::is_same_v<T, double>)
            return m_compiled.formula.EvaluateFloat(*this);
        else
            return m_compiled.formula.EvaluateInteger(*this);
    }

private:
    template <typename T>
    static T Pick(std::int64_t integer, double number)
    {
        if constexpr (std::is_same_v<T, double>)
            return number;
        else
            return integer;
    }

    template <typename T>
    VxExpected<T> Value(const Binding& binding)
    {
        switch (binding.kind) {
        case Binding::Kind::Input:
            return Pick<T>(m_input.integer, m_input.number);
        case Binding::Kind::Number:
            return Pick<T>(binding.integer, binding.number);
        case Binding::Kind::Node:
            return NodeValue<T>(binding);
        case Binding::Kind::SubFormula:
            break;
        }
        return SubValue<T>(*binding.subFormula);
    }

    template <typename T>
    VxExpected<T> SubValue(SubFormula& sub)
    {
        const EvaluationScope scope(m_set.m_context);
        if (!scope.IsAllowed())
            return VxResult(VxError::InvalidData,
                            "its Expression \"" + std::string(sub.name) + "\" refers to itself");
        const auto compiled = m_set.Compile(sub.compiled, sub.text);
        if (!compiled)
            return compiled.Error();
        return Evaluation(m_set, **compiled, m_input).Run<T>();
    }

    template <typename T>
    static VxExpected<T> NodeValue(const Binding& binding)
    {
        switch (binding.aspect) {
        case Aspect::Value:
            return VariableValue<T>(*binding.node);
        case Aspect::Entry:
            return EntryValue<T>(binding);
        case Aspect::Access:
            return static_cast<T>(binding.node->Access());
        case Aspect::Visibility:
            return static_cast<T>(binding.node->Info().visibility);
        case Aspect::Caching:
            return static_cast<T>(CachingOf(*binding.node));
        default:
            return LimitValue<T>(binding);
        }
    }

    /// An enumeration counts with its number, whatever the entry stands for as a float.
    template <typename T>
    static VxExpected<T> VariableValue(Node& node)
    {
        if (node.Info().type != ValueType::Enumeration)
            return GetNumber<T>(node);
        const auto number = node.GetInteger();
        return number ? VxExpected<T>(static_cast<T>(*number)) : VxExpected<T>(number.Error());
    }

    /// The way of caching of the register behind a node.
    static CachingMode CachingOf(const Node& node)
    {
        // Chosen: longer chains of nodes that only hand a value on have not been seen.
        constexpr int kMaxSteps = 10;
        const Node* source = &node;
        for (int step = 0; step < kMaxSteps && source != nullptr; ++step, source = source->FixedTarget())
            if (const auto* const memory = dynamic_cast<const RegisterNode*>(source); memory != nullptr)
                return memory->Caching();
        return CachingMode::WriteThrough;
    }

    template <typename T>
    static VxExpected<T> LimitValue(const Binding& binding)
    {
        if constexpr (std::is_same_v<T, double>) {
            const auto limits = binding.node->GetFloatLimits();
            return limits ? Limit<T>(*limits, binding.aspect) : VxExpected<T>(limits.Error());
        } else {
            const auto limits = binding.node->GetIntegerLimits();
            return limits ? Limit<T>(*limits, binding.aspect) : VxExpected<T>(limits.Error());
        }
    }

    template <typename T, typename Limits>
    static VxExpected<T> Limit(const Limits& limits, Aspect aspect)
    {
        if (aspect == Aspect::Minimum)
            return limits.minimum;
        return aspect == Aspect::Maximum ? limits.maximum : limits.increment;
    }

    template <typename T>
    static VxExpected<T> EntryValue(const Binding& binding)
    {
        if (binding.entry == nullptr)
            return binding.node->Error(VxError::InvalidData, "there is no entry \"" + binding.entryName +
                                                                 "\", which a formula asks for");
        return static_cast<T>(binding.entry->Value());
    }

    FormulaSet& m_set;          // borrowed: outlives the evaluation
    const Compiled& m_compiled; // borrowed from the set
    const Input& m_input;       // borrowed from the caller
};

FormulaSet::FormulaSet(Node& owner, NodeContext& context, Arithmetic arithmetic)
    : m_owner(owner), m_context(context), m_arithmetic(arithmetic)
{
}

FormulaSet::~FormulaSet() = default;

bool FormulaSet::Apply(const NodeProperty& property)
{
    switch (property.element) {
    case Element::Formula:
        m_texts[static_cast<std::size_t>(Slot::Value)] = property.text;
        return true;
    case Element::FormulaTo:
        m_texts[static_cast<std::size_t>(Slot::To)] = property.text;
        return true;
    case Element::FormulaFrom:
        m_texts[static_cast<std::size_t>(Slot::From)] = property.text;
        return true;
    case Element::PVariable:
        m_variables.emplace(property.argument, property.target);
        return true;
    case Element::Constant:
        AddConstant(property);
        return true;
    case Element::Expression:
        m_subFormulas.emplace(property.argument,
                              std::make_unique<SubFormula>(SubFormula{
                                  .name = property.argument, .text = property.text, .compiled = {}}));
        return true;
    default:
        return false;
    }
}

// A constant that is no number is noticed when a formula asks for it.
void FormulaSet::AddConstant(const NodeProperty& property)
{
    const auto number = ParseFloat(property.text);
    if (!number)
        return;
    const auto integer = ParseInteger(property.text);
    m_constants.emplace(property.argument,
                        Constant{.integer = integer.value_or(TruncateToInteger(*number)), .number = *number});
}

AccessMode FormulaSet::Access()
{
    for (const auto& [name, node] : m_variables)
        if (!node->CanBeRead())
            return AccessMode::NotAvailable;
    return AccessMode::ReadOnly;
}

VxExpected<std::int64_t> FormulaSet::EvaluateInteger(Slot slot, const Input& input)
{
    const auto compiled = CompiledSlot(slot);
    if (!compiled)
        return Named(compiled.Error());
    const auto value = Evaluation(*this, **compiled, input).Run<std::int64_t>();
    if (!value)
        return Named(value.Error());
    return *value;
}

VxExpected<double> FormulaSet::EvaluateFloat(Slot slot, const Input& input)
{
    const auto compiled = CompiledSlot(slot);
    if (!compiled)
        return Named(compiled.Error());
    const auto value = Evaluation(*this, **compiled, input).Run<double>();
    if (!value)
        return Named(value.Error());
    return *value;
}

VxResult FormulaSet::Named(const VxResult& result) const
{
    return m_owner.Error(result.Code(), result.GetDescription().Narrow());
}

auto FormulaSet::CompiledSlot(Slot slot) -> VxExpected<const Compiled*>
{
    const auto index = static_cast<std::size_t>(slot);
    return Compile(m_compiled[index], m_texts[index]);
}

auto FormulaSet::Compile(std::unique_ptr<Compiled>& place, std::string_view text)
    -> VxExpected<const Compiled*>
{
    if (place != nullptr)
        return place.get();
    auto formula = Formula::Compile(text, m_arithmetic);
    if (!formula)
        return formula.Error();
    std::vector<Binding> bindings;
    for (const std::string& name : formula->Names()) {
        const auto binding = Bind(name);
        if (!binding)
            return VxResult(VxError::InvalidData,
                            "its formula uses the name \"" + name + "\", which stands for nothing");
        bindings.push_back(*binding);
    }
    place = std::make_unique<Compiled>(Compiled{*std::move(formula), std::move(bindings)});
    return place.get();
}

auto FormulaSet::Bind(std::string_view name) -> std::optional<Binding>
{
    if (auto binding = BindVariable(name))
        return binding;
    // Descriptions that name a variable "TO" or "FROM" in a formula without conversion mean the variable.
    if (std::find(std::begin(kInputNames), std::end(kInputNames), name) != std::end(kInputNames) &&
        !Has(Slot::Value))
        return Binding{};
    if (const auto constant = m_constants.find(name); constant != m_constants.end())
        return Binding{.kind = Binding::Kind::Number,
                       .integer = constant->second.integer,
                       .number = constant->second.number};
    if (const auto sub = m_subFormulas.find(name); sub != m_subFormulas.end())
        return Binding{.kind = Binding::Kind::SubFormula, .subFormula = sub->second.get()};
    if (const auto number = BuiltInConstant(name))
        return Binding{
            .kind = Binding::Kind::Number, .integer = TruncateToInteger(*number), .number = *number};
    return std::nullopt;
}

Node* FormulaSet::FindVariable(std::string_view name) const
{
    const auto found = m_variables.find(name);
    return found == m_variables.end() ? nullptr : found->second;
}

// "Width" stands for the value, "Width.Max" for the maximum. The suffix may be part of the variable's name,
// or stand in the formula only.
auto FormulaSet::BindVariable(std::string_view name) const -> std::optional<Binding>
{
    struct Suffix {
        std::string_view text;
        Aspect aspect;
    };
    constexpr std::array kSuffixes{
        Suffix{".Value", Aspect::Value},        Suffix{".Min", Aspect::Minimum},
        Suffix{".Max", Aspect::Maximum},        Suffix{".Inc", Aspect::Increment},
        Suffix{".AccessMode", Aspect::Access},  Suffix{".Visibility", Aspect::Visibility},
        Suffix{".CachingMode", Aspect::Caching}};
    constexpr std::array<std::string_view, 2> kEntryMarks{".Entry.", ".Enum."};
    const Binding binding{.kind = Binding::Kind::Node, .node = FindVariable(name)};
    const auto findFor = [&](std::string_view base) {
        return binding.node != nullptr ? binding.node : FindVariable(base);
    };
    for (const Suffix& suffix : kSuffixes) {
        Node* const node =
            name.ends_with(suffix.text) ? findFor(name.substr(0, name.size() - suffix.text.size())) : nullptr;
        if (node != nullptr)
            return Binding{.kind = Binding::Kind::Node, .node = node, .aspect = suffix.aspect};
    }
    for (const std::string_view mark : kEntryMarks) {
        const std::size_t start = name.find(mark);
        Node* const node = start != std::string_view::npos ? findFor(name.substr(0, start)) : nullptr;
        if (node == nullptr)
            continue;
        const std::string_view entry = name.substr(start + mark.size());
        const auto* const enumeration = dynamic_cast<const EnumerationNode*>(node);
        return Binding{.kind = Binding::Kind::Node,
                       .node = node,
                       .aspect = Aspect::Entry,
                       .entryName = std::string(entry),
                       .entry = enumeration != nullptr ? enumeration->FindEntry(entry) : nullptr};
    }
    return binding.node != nullptr ? std::optional(binding) : std::nullopt;
}

} // namespace genapi
