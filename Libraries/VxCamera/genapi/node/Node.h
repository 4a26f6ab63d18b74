#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/genapi/node/NodeContext.h"
#include "VxCamera/genapi/node/NodeTypes.h"
#include "VxCamera/genapi/xml/DescriptionTypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace genapi {

class Node;

/// All nodes of a map by id.
using NodeTable = std::vector<std::unique_ptr<Node>>;

/// An element of a node with what it refers to.
struct NodeProperty {
    Element element = Element::Ignored;
    std::string_view text{};
    std::string_view argument{};
    Node* target = nullptr;         ///< borrowed from the map; never null for references that a value needs
    Node* argumentTarget = nullptr; ///< borrowed from the map; never null for PIndexOffset
};

/// A node of the feature tree: values as the description defines them, access as the camera's state allows
/// it.
///
/// The value functions check limits but not access; a user's operation asks Access first. A node that was
/// broken in the description is not implemented, and each use says why.
///
/// Owner:  the map; nodes borrow each other.
/// Thread: under the map's lock.
class Node {
public:
    Node(NodeContext& context, NodeId id, ValueType type, std::string_view name);
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    virtual ~Node() = default;

    /// Takes over the elements of the description; once, when all nodes exist.
    void Configure(std::span<const Property> properties, const NodeTable& nodes);

    /// Takes unit and representation from the node that gives the value, where it has none of its own; once,
    /// when all nodes are configured.
    void InheritDisplay();

    [[nodiscard]] const NodeInfo& Info() const { return m_info; }
    [[nodiscard]] NodeId Id() const { return m_id; }
    [[nodiscard]] std::uint32_t PollingMs() const { return m_pollingMs; }

    /// What is wrong with the node's description; empty if nothing is.
    [[nodiscard]] const std::string& Fault() const { return m_fault; }

    [[nodiscard]] AccessMode Access();

    [[nodiscard]] VxExpected<std::int64_t> GetInteger();
    [[nodiscard]] VxResult SetInteger(std::int64_t value);
    [[nodiscard]] VxExpected<IntegerLimits> GetIntegerLimits();
    [[nodiscard]] VxExpected<double> GetFloat();
    [[nodiscard]] VxResult SetFloat(double value);
    [[nodiscard]] VxExpected<FloatLimits> GetFloatLimits();
    [[nodiscard]] VxExpected<std::string> GetString();
    [[nodiscard]] VxResult SetString(std::string_view value);
    [[nodiscard]] VxExpected<std::vector<std::byte>> GetBytes();
    [[nodiscard]] VxResult SetBytes(std::span<const std::byte> bytes);

    /// @return  the node that gives the value, when there is only one that it can be; borrowed from the map
    [[nodiscard]] virtual Node* FixedTarget() const { return nullptr; }

    /// Whether the float value is kept in 4 bytes, so that fewer digits say all.
    [[nodiscard]] virtual bool IsSinglePrecision() const { return false; }

    /// A result that begins with the node's name.
    [[nodiscard]] VxResult Error(VxError code, std::string_view text) const;

protected:
    /// Takes over an element that is not common to all nodes; ignores those of other kinds.
    virtual void Apply(const NodeProperty& property);
    /// After the last element.
    virtual void Finish() {}

    /// Access without the conditions common to all nodes.
    [[nodiscard]] virtual AccessMode OwnAccess() { return AccessMode::ReadWrite; }

    // By default a float is the integer and an integer the rounded float of a node of the other type.
    [[nodiscard]] virtual VxExpected<std::int64_t> DoGetInteger();
    [[nodiscard]] virtual VxResult DoSetInteger(std::int64_t value);
    [[nodiscard]] virtual VxExpected<IntegerLimits> DoGetIntegerLimits();
    [[nodiscard]] virtual VxExpected<double> DoGetFloat();
    [[nodiscard]] virtual VxResult DoSetFloat(double value);
    [[nodiscard]] virtual VxExpected<FloatLimits> DoGetFloatLimits();
    [[nodiscard]] virtual VxExpected<std::string> DoGetString();
    [[nodiscard]] virtual VxResult DoSetString(std::string_view value);
    [[nodiscard]] virtual VxExpected<std::vector<std::byte>> DoGetBytes();
    [[nodiscard]] virtual VxResult DoSetBytes(std::span<const std::byte> bytes);

    [[nodiscard]] NodeContext& Context() const { return m_context; }
    void SetFault(std::string text);

    /// The element's number; a text that is none is a fault of the node.
    [[nodiscard]] std::optional<std::int64_t> IntegerOf(const NodeProperty& property);
    [[nodiscard]] std::optional<double> FloatOf(const NodeProperty& property);

private:
    bool ApplyCommon(const NodeProperty& property);
    bool ApplyText(const NodeProperty& property);
    void ApplyPolling(const NodeProperty& property);
    [[nodiscard]] VxResult Blocked() const;
    [[nodiscard]] VxResult WrongType(std::string_view wanted) const;
    [[nodiscard]] VxResult CheckInteger(std::int64_t value);
    [[nodiscard]] VxExpected<double> CheckFloat(double value);
    [[nodiscard]] bool HoldsInteger() const;

    NodeContext& m_context; // borrowed from the map
    const NodeId m_id;
    NodeInfo m_info;
    std::string m_fault;
    Node* m_isImplemented = nullptr; // borrowed from the map, like the next two
    Node* m_isAvailable = nullptr;
    Node* m_isLocked = nullptr;
    AccessMode m_imposedAccess = AccessMode::ReadWrite;
    bool m_isFindingAccess = false;
    std::uint32_t m_pollingMs = 0; // 0: never
};

/// A node's value and limits as the type T, std::int64_t or double.
template <typename T>
[[nodiscard]] VxExpected<T> GetNumber(Node& node)
{
    if constexpr (std::is_same_v<T, double>)
        return node.GetFloat();
    else
        return node.GetInteger();
}

template <typename T>
[[nodiscard]] VxResult SetNumber(Node& node, T value)
{
    if constexpr (std::is_same_v<T, double>)
        return node.SetFloat(value);
    else
        return node.SetInteger(value);
}

} // namespace genapi
