#include "VxCamera/genapi/map/FeatureList.h"

#include <optional>
#include <utility>

namespace genapi {

namespace {

// Chosen: bounds the length of paths in a hostile description; real ones have up to five levels.
constexpr std::size_t kMaxDepth = 64;
constexpr std::size_t kMaxPathBytes = 1024;

constexpr const char* kRootPath = "root";

bool HasValue(NodeKind kind)
{
    return kind != NodeKind::Unsupported && kind != NodeKind::Node && kind != NodeKind::Category &&
           kind != NodeKind::EnumEntry && kind != NodeKind::Port;
}

/// Walks the categories with a stack of its own.
class Walk {
public:
    explicit Walk(const std::vector<NodeDescription>& nodes) : m_nodes(nodes), m_isListed(nodes.size()) {}

    std::vector<ListedFeature> From(std::uint32_t root)
    {
        Enter(root, kRootPath);
        while (!m_open.empty()) {
            Level& level = m_open.back();
            const auto& properties = m_nodes[level.category].properties;
            if (level.next == properties.size()) {
                m_open.pop_back();
                continue;
            }
            const Property& property = properties[level.next++];
            if (property.element == Element::PFeature && property.target != kNoNode &&
                !m_isListed[property.target])
                Visit(property.target, level.path);
        }
        return std::move(m_features);
    }

private:
    struct Level {
        std::uint32_t category = 0;
        std::size_t next = 0; // property to look at
        std::string path;
    };

    void Enter(std::uint32_t category, std::string path)
    {
        m_isListed[category] = true; // a category that leads to itself ends here
        m_open.push_back({category, 0, std::move(path)});
    }

    void Visit(std::uint32_t node, const std::string& path)
    {
        const NodeDescription& description = m_nodes[node];
        if (description.kind == NodeKind::Category) {
            if (m_open.size() < kMaxDepth && path.size() + description.name.size() < kMaxPathBytes)
                Enter(node, path + "\\" + std::string(description.name));
        } else if (HasValue(description.kind)) {
            m_isListed[node] = true;
            m_features.push_back({node, path});
        }
    }

    const std::vector<NodeDescription>& m_nodes; // borrowed from the description
    std::vector<bool> m_isListed;
    std::vector<Level> m_open;
    std::vector<ListedFeature> m_features;
};

std::vector<ListedFeature> ListUnused(const Description& description)
{
    const auto& nodes = description.Nodes();
    std::vector<bool> isUsed(nodes.size());
    for (const NodeDescription& node : nodes)
        for (const Property& property : node.properties)
            if (IsReference(property.element) && property.element != Element::PFeature &&
                property.target != kNoNode)
                isUsed[property.target] = true;
    std::vector<ListedFeature> features;
    for (std::uint32_t node = 0; node < nodes.size(); ++node)
        if (!isUsed[node] && HasValue(nodes[node].kind) && description.Find(nodes[node].name) == node)
            features.push_back({node, kRootPath});
    return features;
}

} // namespace

std::vector<ListedFeature> ListFeatures(const Description& description)
{
    const auto root = description.Find("Root");
    if (root && description.Nodes()[*root].kind == NodeKind::Category)
        return Walk(description.Nodes()).From(*root);
    return ListUnused(description);
}

} // namespace genapi
