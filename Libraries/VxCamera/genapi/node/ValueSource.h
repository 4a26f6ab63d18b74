#pragma once

#include "VxCamera/genapi/node/Node.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace genapi {

/// Where a number comes from: a value of its own, another node, or one of several of both chosen by an index.
///
/// Owner:  the node that has the value, by value.
/// Thread: under the map's lock.
template <typename T>
class ValueSource {
public:
    /// @param number  the element's text as a number, when it is a value
    void Apply(const NodeProperty& property, std::optional<T> number);

    /// @return  whether the description gives a value at all
    [[nodiscard]] bool IsEmpty() const { return !m_single && m_index == nullptr; }

    [[nodiscard]] VxExpected<T> Get(const Node& owner);
    [[nodiscard]] VxResult Set(Node& owner, NodeContext& context, T value);
    [[nodiscard]] AccessMode Access(const Node& owner);

    /// @return  the node in force; null for a value of its own
    [[nodiscard]] Node* Target(const Node& owner);

    /// @return  the node when there is only one that it can be
    [[nodiscard]] Node* FixedTarget() const { return m_single ? m_single->node : nullptr; }

private:
    /// A node or, without one, a number that is kept here.
    struct Slot {
        Node* node = nullptr; // borrowed from the map
        T number{};
    };

    [[nodiscard]] VxExpected<Slot*> Chosen(const Node& owner);

    std::optional<Slot> m_single;
    Node* m_index = nullptr; // borrowed from the map
    std::map<std::int64_t, Slot> m_indexed;
    std::optional<Slot> m_default;
    std::vector<Node*> m_copies; // borrowed from the map; written together with the value, never read
};

extern template class ValueSource<std::int64_t>;
extern template class ValueSource<double>;

} // namespace genapi
