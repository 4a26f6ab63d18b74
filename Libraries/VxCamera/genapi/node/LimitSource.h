#pragma once

#include "VxCamera/genapi/node/Node.h"

#include <optional>

namespace genapi {

/// A limit or increment: a number of the description, another node's value, or nothing.
///
/// Owner:  the node that is limited, by value.
/// Thread: under the map's lock.
template <typename T>
class LimitSource {
public:
    void SetNumber(std::optional<T> number) { m_number = number; }
    void SetNode(Node* node) { m_node = node; }

    [[nodiscard]] bool IsEmpty() const { return !m_number && m_node == nullptr; }

    /// Only when not empty.
    [[nodiscard]] VxExpected<T> Get() const
    {
        return m_node != nullptr ? GetNumber<T>(*m_node) : VxExpected<T>(*m_number);
    }

private:
    std::optional<T> m_number;
    Node* m_node = nullptr; // borrowed from the map
};

} // namespace genapi
