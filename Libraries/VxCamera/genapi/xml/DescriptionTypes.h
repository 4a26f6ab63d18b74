#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace genapi {

/// Kinds of nodes. A StructReg is not one: each of its entries becomes a MaskedIntReg.
enum class NodeKind : std::uint8_t {
    Unsupported, ///< a kind of another bus; known by name, not implemented
    Node,
    Category,
    Integer,
    IntReg,
    MaskedIntReg,
    Boolean,
    Command,
    Enumeration,
    EnumEntry,
    Float,
    FloatReg,
    String,
    StringReg,
    Register,
    SwissKnife,
    IntSwissKnife,
    Converter,
    IntConverter,
    Port,
};

/// Elements inside a node. Those from FirstReference on name another node.
enum class Element : std::uint8_t {
    Ignored, ///< known, of no use here
    ToolTip,
    Description,
    DisplayName,
    DocuUrl,
    Visibility,
    IsDeprecated,
    Streamable,
    ImposedAccessMode,
    AccessMode,
    Cachable,
    PollingTime,
    Unit,
    Representation,
    DisplayNotation,
    DisplayPrecision,
    Sign,
    Endianess,
    Lsb,
    Msb,
    Bit,
    Address,
    Length,
    Value,
    ValueIndexed, ///< argument: index
    ValueDefault,
    Min,
    Max,
    Inc,
    ValidValueSet,
    OnValue,
    OffValue,
    CommandValue,
    NumericValue,
    Symbolic,
    IsSelfClearing,
    Formula,
    FormulaTo,
    FormulaFrom,
    Expression, ///< argument: name
    Constant,   ///< argument: name
    Slope,
    IsLinear,
    ChunkId,
    EventId,
    SwapEndianess,

    FirstReference,
    PIsImplemented = FirstReference,
    PIsAvailable,
    PIsLocked,
    PBlockPolling,
    PError,
    PAlias,
    PCastAlias,
    PInvalidator,
    PFeature,
    PSelected,
    PValue,
    PValueCopy,
    PValueIndexed, ///< argument: index
    PValueDefault,
    PIndex,       ///< argument: offset for each step of the index; may be empty
    PIndexOffset, ///< argument: node that gives the offset for each step
    PMin,
    PMax,
    PInc,
    PAddress,
    PLength,
    PPort,
    PVariable, ///< argument: name in the formula
    PCommandValue,
    PChunkId,
    PEnumEntry,

    // Not in the file as such: references to nodes that stand inside others.
    EnumEntry,
    AddressKnife,
};

[[nodiscard]] constexpr bool IsReference(Element element)
{
    return element >= Element::FirstReference;
}

/// Target of a reference to a node that the description does not have.
constexpr std::uint32_t kNoNode = UINT32_MAX;

/// One element of a node.
struct Property {
    Element element = Element::Ignored;
    std::string_view text;                  ///< blanks around it removed; of a reference, the name
    std::string_view argument;              ///< the attribute that goes with the element
    std::uint32_t target = kNoNode;         ///< of a reference: index of the node
    std::uint32_t argumentTarget = kNoNode; ///< of PIndexOffset: index of the node
};

/// Who has given a node its name: the naming convention of camera features, or the camera's maker.
enum class NameSpace : std::uint8_t { Custom, Standard };

/// One node as the file has it.
struct NodeDescription {
    NodeKind kind = NodeKind::Unsupported;
    NameSpace nameSpace = NameSpace::Custom;
    std::int8_t mergePriority = 0; ///< of two nodes of one name, the one with the higher number counts
    std::string_view name;
    std::span<const Property> properties;
};

} // namespace genapi
