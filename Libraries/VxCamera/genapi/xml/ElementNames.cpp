#include "VxCamera/genapi/xml/ElementNames.h"

#include <algorithm>
#include <array>

namespace genapi {

namespace {

struct ElementName {
    std::string_view name;
    Element element;
};

constexpr std::array kElements{
    ElementName{"ToolTip", Element::ToolTip},
    ElementName{"Description", Element::Description},
    ElementName{"DisplayName", Element::DisplayName},
    ElementName{"DocuURL", Element::DocuUrl},
    ElementName{"Visibility", Element::Visibility},
    ElementName{"IsDeprecated", Element::IsDeprecated},
    ElementName{"Streamable", Element::Streamable},
    ElementName{"ImposedAccessMode", Element::ImposedAccessMode},
    ElementName{"AccessMode", Element::AccessMode},
    ElementName{"Cachable", Element::Cachable},
    ElementName{"PollingTime", Element::PollingTime},
    ElementName{"Unit", Element::Unit},
    ElementName{"Representation", Element::Representation},
    ElementName{"DisplayNotation", Element::DisplayNotation},
    ElementName{"DisplayPrecision", Element::DisplayPrecision},
    ElementName{"Sign", Element::Sign},
    ElementName{"Endianess", Element::Endianess},
    ElementName{"LSB", Element::Lsb},
    ElementName{"MSB", Element::Msb},
    ElementName{"Bit", Element::Bit},
    ElementName{"Address", Element::Address},
    ElementName{"Length", Element::Length},
    ElementName{"Value", Element::Value},
    ElementName{"ValueIndexed", Element::ValueIndexed},
    ElementName{"ValueDefault", Element::ValueDefault},
    ElementName{"Min", Element::Min},
    ElementName{"Max", Element::Max},
    ElementName{"Inc", Element::Inc},
    ElementName{"ValidValueSet", Element::ValidValueSet},
    ElementName{"OnValue", Element::OnValue},
    ElementName{"OffValue", Element::OffValue},
    ElementName{"CommandValue", Element::CommandValue},
    ElementName{"NumericValue", Element::NumericValue},
    ElementName{"Symbolic", Element::Symbolic},
    ElementName{"IsSelfClearing", Element::IsSelfClearing},
    ElementName{"Formula", Element::Formula},
    ElementName{"FormulaTo", Element::FormulaTo},
    ElementName{"FormulaFrom", Element::FormulaFrom},
    ElementName{"Expression", Element::Expression},
    ElementName{"Constant", Element::Constant},
    ElementName{"Slope", Element::Slope},
    ElementName{"IsLinear", Element::IsLinear},
    ElementName{"ChunkID", Element::ChunkId},
    ElementName{"EventID", Element::EventId},
    ElementName{"SwapEndianess", Element::SwapEndianess},
    ElementName{"pIsImplemented", Element::PIsImplemented},
    ElementName{"pIsAvailable", Element::PIsAvailable},
    ElementName{"pIsLocked", Element::PIsLocked},
    ElementName{"pBlockPolling", Element::PBlockPolling},
    ElementName{"pError", Element::PError},
    ElementName{"pAlias", Element::PAlias},
    ElementName{"pCastAlias", Element::PCastAlias},
    ElementName{"pInvalidator", Element::PInvalidator},
    ElementName{"pFeature", Element::PFeature},
    ElementName{"pSelected", Element::PSelected},
    ElementName{"pValue", Element::PValue},
    ElementName{"pValueCopy", Element::PValueCopy},
    ElementName{"pValueIndexed", Element::PValueIndexed},
    ElementName{"pValueDefault", Element::PValueDefault},
    ElementName{"pIndex", Element::PIndex},
    ElementName{"pMin", Element::PMin},
    ElementName{"pMax", Element::PMax},
    ElementName{"pInc", Element::PInc},
    ElementName{"pAddress", Element::PAddress},
    ElementName{"pLength", Element::PLength},
    ElementName{"pPort", Element::PPort},
    ElementName{"pVariable", Element::PVariable},
    ElementName{"pCommandValue", Element::PCommandValue},
    ElementName{"pChunkID", Element::PChunkId},
    ElementName{"pEnumEntry", Element::PEnumEntry},
    // Data of the camera's maker, which may be anything.
    ElementName{"Extension", Element::Ignored},
    // Chunks are copied in any case.
    ElementName{"CacheChunkData", Element::Ignored},
};

constexpr auto kSortedElements = [] {
    auto sorted = kElements;
    std::ranges::sort(sorted, {}, &ElementName::name);
    return sorted;
}();

struct KindName {
    std::string_view name;
    NodeKind kind;
};

constexpr std::array kKinds{
    KindName{"Node", NodeKind::Node},
    KindName{"Category", NodeKind::Category},
    KindName{"Integer", NodeKind::Integer},
    KindName{"IntReg", NodeKind::IntReg},
    KindName{"MaskedIntReg", NodeKind::MaskedIntReg},
    KindName{"Boolean", NodeKind::Boolean},
    KindName{"Command", NodeKind::Command},
    KindName{"Enumeration", NodeKind::Enumeration},
    KindName{"EnumEntry", NodeKind::EnumEntry},
    KindName{"Float", NodeKind::Float},
    KindName{"FloatReg", NodeKind::FloatReg},
    KindName{"String", NodeKind::String},
    KindName{"StringReg", NodeKind::StringReg},
    KindName{"Register", NodeKind::Register},
    KindName{"SwissKnife", NodeKind::SwissKnife},
    KindName{"IntSwissKnife", NodeKind::IntSwissKnife},
    KindName{"Converter", NodeKind::Converter},
    KindName{"IntConverter", NodeKind::IntConverter},
    KindName{"Port", NodeKind::Port},
    // Only on the IEEE 1394 bus.
    KindName{"AdvFeatureLock", NodeKind::Unsupported},
    KindName{"DcamLock", NodeKind::Unsupported},
    KindName{"SmartFeature", NodeKind::Unsupported},
    KindName{"ConfRom", NodeKind::Unsupported},
    KindName{"TextDesc", NodeKind::Unsupported},
    KindName{"IntKey", NodeKind::Unsupported},
};

} // namespace

std::optional<Element> FindElement(std::string_view name)
{
    const auto found = std::ranges::lower_bound(kSortedElements, name, {}, &ElementName::name);
    return found != kSortedElements.end() && found->name == name ? std::optional(found->element)
                                                                 : std::nullopt;
}

std::string_view NameOf(Element element)
{
    for (const ElementName& entry : kElements)
        if (entry.element == element && element != Element::Ignored)
            return entry.name;
    return element == Element::PIndexOffset ? "pIndex" : "";
}

std::optional<NodeKind> FindNodeKind(std::string_view name)
{
    for (const KindName& entry : kKinds)
        if (entry.name == name)
            return entry.kind;
    return std::nullopt;
}

} // namespace genapi
