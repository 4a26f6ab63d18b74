#include "VxCamera/surface/NodeParameterArray.h"

#include <tuple>
#include <utility>

#include "VxCamera/surface/NoThrow.h"
#include "VxCamera/surface/NodeBoolean.h"
#include "VxCamera/surface/NodeCommand.h"
#include "VxCamera/surface/NodeEnum.h"
#include "VxCamera/surface/NodeFloat.h"
#include "VxCamera/surface/NodeInteger.h"
#include "VxCamera/surface/NodeRegister.h"
#include "VxCamera/surface/NodeString.h"

namespace {

/// A node without a value, such as a category.
class NodeWithoutValue final : public surface::NodeParameterOf<VxGenParameter> {
public:
    using NodeParameterOf::NodeParameterOf;
};

std::unique_ptr<VxGenParameter> MakeParameter(genapi::NodeMap& map, genapi::NodeId node,
                                              std::string_view category)
{
    switch (map.Info(node).type) {
    case genapi::ValueType::Integer:
        return std::make_unique<surface::NodeInteger>(map, node, category);
    case genapi::ValueType::Float:
        return std::make_unique<surface::NodeFloat>(map, node, category);
    case genapi::ValueType::Boolean:
        return std::make_unique<surface::NodeBoolean>(map, node, category);
    case genapi::ValueType::Command:
        return std::make_unique<surface::NodeCommand>(map, node, category);
    case genapi::ValueType::Enumeration:
        return std::make_unique<surface::NodeEnum>(map, node, category);
    case genapi::ValueType::String:
        return std::make_unique<surface::NodeString>(map, node, category);
    case genapi::ValueType::Register:
        return std::make_unique<surface::NodeRegister>(map, node, category);
    default:
        return std::make_unique<NodeWithoutValue>(map, node, category);
    }
}

} // namespace

NodeParameterArray::NodeParameterArray(std::unique_ptr<genapi::NodeMap> map) : m_map(std::move(map)) {}

NodeParameterArray::~NodeParameterArray() = default;

std::unique_ptr<NodeParameterArray> NodeParameterArray::Create(std::unique_ptr<genapi::NodeMap> map)
{
    std::unique_ptr<NodeParameterArray> array(new NodeParameterArray(std::move(map)));
    if (array->m_map != nullptr)
        array->MakeFeatures();
    return array;
}

void NodeParameterArray::MakeFeatures()
{
    m_parameters.resize(m_map->NodeCount());
    for (const genapi::Feature& feature : m_map->Features()) {
        auto& parameter = m_parameters[static_cast<std::size_t>(feature.node)];
        parameter = MakeParameter(*m_map, feature.node, feature.category);
        m_features.push_back(parameter.get());
    }
}

std::size_t NodeParameterArray::GetCount() const
{
    return m_features.size();
}

VxGenParameter* NodeParameterArray::Get(std::size_t index) const
{
    return index < m_features.size() ? m_features[index] : nullptr;
}

VxGenParameter* NodeParameterArray::Get(const VxString& name) const
{
    VxGenParameter* found = nullptr;
    // A feature for which there is no memory is none.
    std::ignore = NoThrow([&] {
        const auto node = m_map != nullptr ? m_map->Find(name.Narrow()) : std::nullopt;
        if (!node)
            return VxResult(VxError::NotFound);
        const auto lock = m_map->Hold();
        auto& parameter = m_parameters[static_cast<std::size_t>(*node)];
        if (parameter == nullptr) // a node outside of all categories, asked for for the first time
            parameter = MakeParameter(*m_map, *node, {});
        found = parameter.get();
        return VxResult::Ok();
    });
    return found;
}
