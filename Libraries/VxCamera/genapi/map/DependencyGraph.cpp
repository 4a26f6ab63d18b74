#include "VxCamera/genapi/map/DependencyGraph.h"

namespace genapi {

namespace {

/// The value, or the register where it stands, follows from the node named.
bool IsUse(Element element)
{
    switch (element) {
    case Element::PValue:
    case Element::PValueIndexed:
    case Element::PValueDefault:
    case Element::PIndex:
    case Element::PIndexOffset:
    case Element::PAddress:
    case Element::AddressKnife:
    case Element::PLength:
    case Element::PVariable:
    case Element::PCommandValue:
        return true;
    default:
        return false;
    }
}

/// The camera may change the value when the node named changes. A lock does not change values.
bool IsEffect(Element element)
{
    switch (element) {
    case Element::PInvalidator:
    case Element::PMin:
    case Element::PMax:
    case Element::PInc:
    case Element::PIsAvailable:
    case Element::PIsImplemented:
        return true;
    default:
        return false;
    }
}

/// The value is handed on from the node named. The variables of a formula are not followed: they are values
/// in their own right, and descriptions name what invalidates them.
bool IsSource(Element element)
{
    return element == Element::PValue || element == Element::PValueIndexed ||
           element == Element::PValueDefault;
}

} // namespace

std::span<const std::uint32_t> DependencyGraph::Edges::Of(std::uint32_t node) const
{
    return std::span(targets).subspan(starts[node], starts[node + 1] - starts[node]);
}

DependencyGraph::DependencyGraph(const std::vector<NodeDescription>& nodes)
    : m_climbed(nodes.size()), m_descended(nodes.size())
{
    std::vector<Pair> users;
    std::vector<Pair> effects;
    std::vector<Pair> sources;
    for (std::uint32_t node = 0; node < nodes.size(); ++node) {
        for (const Property& property : nodes[node].properties) {
            if (!IsReference(property.element) || property.target == kNoNode)
                continue;
            if (IsUse(property.element))
                users.push_back({property.target, node});
            if (property.argumentTarget != kNoNode)
                users.push_back({property.argumentTarget, node});
            if (IsEffect(property.element))
                effects.push_back({property.target, node});
            if (property.element == Element::PSelected)
                effects.push_back({node, property.target});
            if (IsSource(property.element))
                sources.push_back({node, property.target});
        }
    }
    m_users = Sort(nodes.size(), users);
    m_effects = Sort(nodes.size(), effects);
    m_sources = Sort(nodes.size(), sources);
}

auto DependencyGraph::Sort(std::size_t nodeCount, const std::vector<Pair>& pairs) -> Edges
{
    Edges edges;
    edges.starts.assign(nodeCount + 1, 0);
    edges.targets.resize(pairs.size());
    for (const Pair& pair : pairs)
        ++edges.starts[pair.from + 1];
    for (std::size_t i = 1; i <= nodeCount; ++i)
        edges.starts[i] += edges.starts[i - 1];
    std::vector<std::uint32_t> next(edges.starts.begin(), edges.starts.end() - 1);
    for (const Pair& pair : pairs)
        edges.targets[next[pair.from]++] = pair.to;
    return edges;
}

std::span<const std::uint32_t> DependencyGraph::AffectedBy(std::uint32_t source)
{
    ++m_call;
    m_result.clear();
    m_descended[source] = m_call; // stays out of the result
    Climb(source);
    return m_result;
}

std::span<const std::uint32_t> DependencyGraph::Below(std::uint32_t node)
{
    ++m_call;
    m_result.clear();
    m_stack.clear();
    Descend(node);
    return m_result;
}

void DependencyGraph::Climb(std::uint32_t source)
{
    std::vector<std::uint32_t> waiting{source};
    m_climbed[source] = m_call;
    const auto wait = [&](std::uint32_t node) {
        if (m_climbed[node] != m_call) {
            m_climbed[node] = m_call;
            waiting.push_back(node);
        }
    };
    while (!waiting.empty()) {
        const std::uint32_t node = waiting.back();
        waiting.pop_back();
        for (const std::uint32_t user : m_users.Of(node))
            wait(user);
        for (const std::uint32_t affected : m_effects.Of(node)) {
            const std::size_t first = m_result.size();
            Descend(affected);
            wait(affected);
            // What lies below is read again, so whatever is computed from it changes, too.
            for (std::size_t i = first; i < m_result.size(); ++i)
                wait(m_result[i]);
        }
    }
}

void DependencyGraph::Descend(std::uint32_t node)
{
    const auto visit = [&](std::uint32_t next) {
        if (m_descended[next] != m_call) {
            m_descended[next] = m_call;
            m_stack.push_back(next);
            m_result.push_back(next);
        }
    };
    visit(node);
    while (!m_stack.empty()) {
        const std::uint32_t current = m_stack.back();
        m_stack.pop_back();
        for (const std::uint32_t source : m_sources.Of(current))
            visit(source);
    }
}

} // namespace genapi
