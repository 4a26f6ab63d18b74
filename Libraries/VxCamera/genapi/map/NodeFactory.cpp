#include "VxCamera/genapi/map/NodeFactory.h"

#include "VxCamera/genapi/node/BooleanNode.h"
#include "VxCamera/genapi/node/CommandNode.h"
#include "VxCamera/genapi/node/ConverterNode.h"
#include "VxCamera/genapi/node/EnumEntryNode.h"
#include "VxCamera/genapi/node/EnumerationNode.h"
#include "VxCamera/genapi/node/FloatNode.h"
#include "VxCamera/genapi/node/FloatRegNode.h"
#include "VxCamera/genapi/node/IntRegNode.h"
#include "VxCamera/genapi/node/IntegerNode.h"
#include "VxCamera/genapi/node/KnifeNode.h"
#include "VxCamera/genapi/node/PlainNode.h"
#include "VxCamera/genapi/node/PortNode.h"
#include "VxCamera/genapi/node/RegisterNode.h"
#include "VxCamera/genapi/node/StringNode.h"
#include "VxCamera/genapi/node/StringRegNode.h"

namespace genapi {

std::unique_ptr<Node> MakeNode(NodeContext& context, NodeId id, const NodeDescription& description)
{
    const std::string_view name = description.name;
    switch (description.kind) {
    case NodeKind::Category:
        return std::make_unique<PlainNode>(context, id, ValueType::Category, name);
    case NodeKind::Integer:
        return std::make_unique<IntegerNode>(context, id, name);
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
        return std::make_unique<IntRegNode>(context, id, name);
    case NodeKind::Boolean:
        return std::make_unique<BooleanNode>(context, id, name);
    case NodeKind::Command:
        return std::make_unique<CommandNode>(context, id, name);
    case NodeKind::Enumeration:
        return std::make_unique<EnumerationNode>(context, id, name);
    case NodeKind::EnumEntry:
        return std::make_unique<EnumEntryNode>(context, id, name);
    case NodeKind::Float:
        return std::make_unique<FloatNode>(context, id, name);
    case NodeKind::FloatReg:
        return std::make_unique<FloatRegNode>(context, id, name);
    case NodeKind::String:
        return std::make_unique<StringNode>(context, id, name);
    case NodeKind::StringReg:
        return std::make_unique<StringRegNode>(context, id, name);
    case NodeKind::Register:
        return std::make_unique<RegisterNode>(context, id, ValueType::Register, name);
    case NodeKind::SwissKnife:
        return std::make_unique<KnifeNode>(context, id, ValueType::Float, name);
    case NodeKind::IntSwissKnife:
        return std::make_unique<KnifeNode>(context, id, ValueType::Integer, name);
    case NodeKind::Converter:
        return std::make_unique<ConverterNode>(context, id, ValueType::Float, name);
    case NodeKind::IntConverter:
        return std::make_unique<ConverterNode>(context, id, ValueType::Integer, name);
    case NodeKind::Port:
        return std::make_unique<PortNode>(context, id, ValueType::Port, name);
    case NodeKind::Node:
    case NodeKind::Unsupported:
        break;
    }
    return std::make_unique<PlainNode>(context, id, ValueType::None, name);
}

} // namespace genapi
