#include "VxCamera/genapi/map/NodeMap.h"

#include "VxCamera/genapi/map/NodeMapImpl.h"
#include "VxCamera/genapi/node/TextForm.h"
#include "VxCamera/genapi/xml/NumberText.h"

// Values of any type as text: the part of NodeMap that chooses by type.

namespace genapi {

namespace {

VxResult NoValue(const Node& node, std::string_view text, std::string_view wanted)
{
    constexpr std::size_t kShownCharacters = 80;
    return node.Error(VxError::InvalidData, "\"" + std::string(text.substr(0, kShownCharacters)) +
                                                "\" is no " + std::string(wanted));
}

/// The entry of that name, or the one with that number.
VxResult SetEntryFromText(NodeMap& map, NodeMapImpl& impl, NodeId id, std::string_view text)
{
    const auto* const enumeration = dynamic_cast<const EnumerationNode*>(&impl.At(id));
    const std::string_view name = Trim(text);
    if (enumeration != nullptr && enumeration->FindEntry(name) == nullptr)
        if (const auto number = ParseInteger(name))
            return map.SetInteger(id, *number);
    return map.SetEntry(id, name);
}

} // namespace

VxExpected<std::string> NodeMap::ToText(NodeId id)
{
    const auto lock = Hold();
    if (!m_impl->Begin())
        return m_impl->Closed(m_impl->At(id));
    const NodeInfo& info = Info(id);
    const auto convert = [](const auto& value, auto function) -> VxExpected<std::string> {
        return value ? VxExpected<std::string>(function(*value)) : VxExpected<std::string>(value.Error());
    };
    switch (info.type) {
    case ValueType::Integer:
        return convert(GetInteger(id),
                       [&](std::int64_t value) { return IntegerToText(value, info.representation); });
    case ValueType::Float: {
        const auto digits = m_impl->At(id).IsSinglePrecision() ? FloatDigits::Single : FloatDigits::Double;
        return convert(GetFloat(id), [&](double value) { return FloatToText(value, digits); });
    }
    case ValueType::Boolean:
        return convert(GetBoolean(id), [](bool value) { return std::string(value ? "true" : "false"); });
    case ValueType::Enumeration:
        return convert(GetEntry(id), [&](NodeId entry) { return std::string(EntryName(entry)); });
    case ValueType::String:
        return GetString(id);
    case ValueType::Register:
        return convert(GetBytes(id), [](const std::vector<std::byte>& bytes) { return BytesToText(bytes); });
    case ValueType::Command:
        return std::string();
    case ValueType::Category:
        return std::string(info.name);
    default:
        return m_impl->At(id).Error(VxError::TypeMismatch, "it has no value");
    }
}

VxResult NodeMap::FromText(NodeId id, std::string_view text)
{
    const auto lock = Hold();
    const Node& node = m_impl->At(id);
    if (!m_impl->Begin())
        return m_impl->Closed(node); // whatever the text is
    switch (node.Info().type) {
    case ValueType::Integer: {
        const auto value = IntegerFromText(text);
        return value ? SetInteger(id, *value)
                     : NoValue(node, text,
                               "integer: decimal, hexadecimal after 0x, a.b.c.d or aa:bb:cc:dd:ee:ff");
    }
    case ValueType::Float: {
        const auto value = ParseFloat(text);
        return value ? SetFloat(id, *value) : NoValue(node, text, "number");
    }
    case ValueType::Boolean: {
        const auto value = BooleanFromText(text);
        return value ? SetBoolean(id, *value) : NoValue(node, text, "truth value: true or false");
    }
    case ValueType::Enumeration:
        return SetEntryFromText(*this, *m_impl, id, text);
    case ValueType::String:
        return SetString(id, text);
    case ValueType::Register: {
        const auto bytes = BytesFromText(text);
        return bytes ? SetBytes(id, *bytes) : NoValue(node, text, "row of pairs of hexadecimal digits");
    }
    case ValueType::Command:
        return Execute(id);
    default:
        return node.Error(VxError::TypeMismatch, "it has no value");
    }
}

} // namespace genapi
