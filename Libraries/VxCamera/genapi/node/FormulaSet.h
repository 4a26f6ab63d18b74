#pragma once

#include "VxCamera/genapi/formula/Formula.h"
#include "VxCamera/genapi/node/Node.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

namespace genapi {

/// The formulas of one node with the variables, constants and sub-formulas they share. Compiled on first use.
///
/// Names are looked up in this order: the value that is being converted, variables, constants, sub-formulas,
/// "PI" and "E".
///
/// Owner:  the node that computes, by value. Borrows the node and texts of the description.
/// Thread: under the map's lock.
class FormulaSet {
public:
    enum class Slot : std::uint8_t { Value, To, From };

    /// The value that is converted, as both kinds of arithmetic want it.
    struct Input {
        std::int64_t integer = 0;
        double number = 0;
    };

    FormulaSet(Node& owner, NodeContext& context, Arithmetic arithmetic);
    ~FormulaSet();
    FormulaSet(const FormulaSet&) = delete;
    FormulaSet& operator=(const FormulaSet&) = delete;

    /// @return  whether the element was one of a formula's
    bool Apply(const NodeProperty& property);

    [[nodiscard]] bool Has(Slot slot) const { return !m_texts[static_cast<std::size_t>(slot)].empty(); }

    /// Only for the arithmetic of this set.
    [[nodiscard]] VxExpected<std::int64_t> EvaluateInteger(Slot slot, const Input& input);
    [[nodiscard]] VxExpected<double> EvaluateFloat(Slot slot, const Input& input);

    /// @return  RO when all variables can be read, else NA
    [[nodiscard]] AccessMode Access();

private:
    enum class Aspect : std::uint8_t {
        Value,
        Minimum,
        Maximum,
        Increment,
        Access,
        Visibility,
        Caching,
        Entry,
    };

    struct Constant {
        std::int64_t integer = 0;
        double number = 0;
    };
    struct SubFormula;
    struct Compiled;
    struct Binding;
    class Evaluation;

    void AddConstant(const NodeProperty& property);
    [[nodiscard]] VxExpected<const Compiled*> Compile(std::unique_ptr<Compiled>& place,
                                                      std::string_view text);
    [[nodiscard]] VxExpected<const Compiled*> CompiledSlot(Slot slot);
    [[nodiscard]] std::optional<Binding> Bind(std::string_view name);
    [[nodiscard]] std::optional<Binding> BindVariable(std::string_view name) const;
    [[nodiscard]] Node* FindVariable(std::string_view name) const;
    [[nodiscard]] VxResult Named(const VxResult& result) const;

    Node& m_owner;          // borrowed: owns this
    NodeContext& m_context; // borrowed from the map
    const Arithmetic m_arithmetic;
    std::array<std::string_view, 3> m_texts; // by slot
    std::array<std::unique_ptr<Compiled>, 3> m_compiled;
    // By the names that formulas write; of two of one name the first counts. A hostile description has so
    // many that they must be found fast.
    std::map<std::string_view, Node*> m_variables; // with the aspect's suffix; borrowed from the map
    std::map<std::string_view, Constant> m_constants;
    std::map<std::string_view, std::unique_ptr<SubFormula>> m_subFormulas;
};

} // namespace genapi
