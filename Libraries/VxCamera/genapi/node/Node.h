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
#include <utility>
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

    /// @return  the node that keeps the value from being read again while it is not 0; null: none. Borrowed.
    [[nodiscard]] Node* PollingBlock() const { return m_pollingBlock; }

    /// @return  nodes that describe the same in another way; null: none. Borrowed.
    [[nodiscard]] Node* Alias() const { return m_alias; }
    [[nodiscard]] Node* CastAlias() const { return m_castAlias; }

    /// @return  the event of the camera that changes the value
    [[nodiscard]] std::optional<std::uint64_t> EventId() const { return m_eventId; }

    /// What is wrong with the node's description; empty if nothing is.
    [[nodiscard]] const std::string& Fault() const { return m_fault; }

    [[nodiscard]] AccessMode Access() { return FindAccess(Locks::Asked); }

    /// @return  whether it can be read now; asks no lock, which takes only the right to write
    [[nodiscard]] bool CanBeRead() { return IsReadable(FindAccess(Locks::LeftOut)); }

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

    /// @return  name of a number; "" where numbers have none
    [[nodiscard]] virtual std::string_view NameOfNumber(std::int64_t) const { return {}; }

    /// Whether the float value is kept in 4 bytes, so that fewer digits say all.
    [[nodiscard]] virtual bool IsSinglePrecision() const { return false; }

    /// A result that begins with the node's name.
    [[nodiscard]] VxResult Error(VxError code, std::string_view text) const;

    /// @return  whether the node can be used whatever the camera's state, as far as the node itself says
    [[nodiscard]] bool HasNoConditions() const
    {
        return m_isImplemented == nullptr && m_isAvailable == nullptr && m_isLocked == nullptr &&
               m_imposedAccess == AccessMode::ReadWrite && m_fault.empty();
    }

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

    /// Asks the nodes that tell of errors after something was written.
    /// @param result  of the writing
    [[nodiscard]] VxResult Verified(VxResult result);

    /// Sets the integer next to a float.
    [[nodiscard]] VxResult SetRounded(double value);

    /// The element's number; a text that is none is a fault of the node.
    [[nodiscard]] std::optional<std::int64_t> IntegerOf(const NodeProperty& property);
    [[nodiscard]] std::optional<double> FloatOf(const NodeProperty& property);

private:
    enum class Locks : std::uint8_t { Asked, LeftOut };

    /// What was found out in an epoch of the context. Conditions of conditions ask for the same again and
    /// again.
    struct KnownAccess {
        std::uint64_t epoch = 0; // 0: nothing yet
        AccessMode mode = AccessMode::NotImplemented;
    };

    [[nodiscard]] AccessMode FindAccess(Locks locks);
    [[nodiscard]] AccessMode ComputeAccess(Locks locks);
    bool ApplyCommon(const NodeProperty& property);
    bool ApplyCommonReference(const NodeProperty& property);
    bool ApplyDisplay(const NodeProperty& property);
    void ApplyPolling(const NodeProperty& property);
    void ApplyEventId(const NodeProperty& property);
    [[nodiscard]] VxResult Blocked() const;
    [[nodiscard]] VxResult WrongType(std::string_view wanted) const;

    /// Asks the node that gives the value as another type.
    template <typename Function>
    [[nodiscard]] auto AskCastAlias(Function function, std::string_view wanted) const
        -> decltype(function(std::declval<Node&>()))
    {
        if (m_castAlias != nullptr)
            return function(*m_castAlias);
        return WrongType(wanted);
    }
    [[nodiscard]] VxResult CheckInteger(std::int64_t value);
    [[nodiscard]] VxExpected<double> CheckFloat(double value);
    [[nodiscard]] bool HoldsInteger() const;

    NodeContext& m_context; // borrowed from the map
    const NodeId m_id;
    NodeInfo m_info;
    std::string m_fault;
    Node* m_isImplemented = nullptr; // borrowed from the map, like the next ones
    Node* m_isAvailable = nullptr;
    Node* m_isLocked = nullptr;
    Node* m_pollingBlock = nullptr;
    Node* m_alias = nullptr;
    Node* m_castAlias = nullptr;
    std::vector<Node*> m_errors;
    std::optional<std::uint64_t> m_eventId;
    AccessMode m_imposedAccess = AccessMode::ReadWrite;
    bool m_isFindingAccess = false;
    KnownAccess m_access;          // with locks
    KnownAccess m_unlockedAccess;  // without
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
