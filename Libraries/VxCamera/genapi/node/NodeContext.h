#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/genapi/IRegisterPort.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace genapi {

class Node;

/// Told by nodes what happened to values, so that others forget what no longer holds.
class IChangeListener {
public:
    IChangeListener() = default;
    IChangeListener(const IChangeListener&) = delete;
    IChangeListener& operator=(const IChangeListener&) = delete;

    /// A register or a variable was written, or its write failed.
    virtual void Changed(Node& source) = 0;

    /// The next read of the node must ask the camera.
    virtual void Forget(Node& node) = 0;

protected:
    ~IChangeListener() = default;
};

/// How the numbers in registers are arranged.
enum class WordOrder : std::uint8_t {
    AsDescribed,
    FourBytesBigEndian, ///< registers of 4 bytes are big-endian, whatever the description says
};

/// What all nodes of a map share.
///
/// Reading a node may read others, as the description says; a hostile one says so without end. So an
/// operation has a depth, which bounds the stack, a budget, which bounds the time of evaluating, and, where a
/// clock is given, a deadline, which bounds the time of asking the camera.
///
/// Owner:  the map's implementation. Borrows the port and the listener.
/// Thread: under the map's lock.
class NodeContext {
public:
    NodeContext(IRegisterPort& device, IChangeListener& listener, WordOrder order, const IVxClock* clock)
        : m_device(device), m_listener(listener), m_order(order), m_clock(clock)
    {
    }
    NodeContext(const NodeContext&) = delete;
    NodeContext& operator=(const NodeContext&) = delete;

    [[nodiscard]] IRegisterPort& Device() { return m_device; }
    [[nodiscard]] IChangeListener& Listener() { return m_listener; }
    [[nodiscard]] WordOrder Order() const { return m_order; }
    void SetOrder(WordOrder order) { m_order = order; }

    /// @return  whether values may be kept where the description allows it
    [[nodiscard]] bool IsCaching() const { return m_isCaching; }
    void SetCaching(bool isOn) { m_isCaching = isOn; }

    /// Starts an operation of a user with a fresh budget and a new deadline.
    void BeginOperation();

    /// Looks at the clock before the camera is asked.
    /// @return  TIMEOUT when the operation has lasted too long: nothing more may be asked for it
    [[nodiscard]] VxResult CheckDeadline();

    /// @return  whether CheckDeadline has refused something in the current operation
    [[nodiscard]] bool IsLate() const { return m_isLate; }

    /// A number that changes with each operation and with each change of a value in it: what was found out
    /// under the same number still holds.
    [[nodiscard]] std::uint64_t Epoch() const { return m_epoch; }
    void BeginEpoch() { ++m_epoch; }

    /// @return  false when the operation has become too deep or too expensive; Leave must follow in any case
    [[nodiscard]] bool Enter();
    void Leave() { --m_depth; }
    void Spend(std::size_t steps);

    /// @return  what the age of values with a polling time is told by; null: such values are never kept
    [[nodiscard]] const IVxClock* Clock() const { return m_clock; }

    /// The node whose lock took the right to write from a node in the current operation; "" if none did.
    [[nodiscard]] std::string_view Lock() const { return m_lock; }
    void SetLock(std::string_view node) { m_lock = node; }

    /// What brings the data of a port that has none, as the current operation has found; "" if it met no such
    /// port.
    [[nodiscard]] std::string_view Awaited() const { return m_awaited; }
    void SetAwaited(std::string_view what) { m_awaited = what; }

private:
    IRegisterPort& m_device;     // borrowed: outlives the map
    IChangeListener& m_listener; // borrowed: owns this context
    WordOrder m_order;
    bool m_isCaching = true;
    const IVxClock* const m_clock; // borrowed: outlives the map
    int m_depth = 0;
    std::size_t m_budget = 0;
    std::optional<IVxClock::Time> m_deadline; // nothing without a clock
    bool m_isLate = false;
    std::uint64_t m_epoch = 1;
    std::string_view m_lock;    // borrowed from the description
    std::string_view m_awaited; // literals
};

/// Counts one level of evaluation for one scope.
class EvaluationScope final {
public:
    explicit EvaluationScope(NodeContext& context) : m_context(context), m_isAllowed(context.Enter()) {}
    ~EvaluationScope() { m_context.Leave(); }
    EvaluationScope(const EvaluationScope&) = delete;
    EvaluationScope& operator=(const EvaluationScope&) = delete;

    [[nodiscard]] bool IsAllowed() const { return m_isAllowed; }

private:
    NodeContext& m_context; // borrowed: outlives the scope
    const bool m_isAllowed;
};

} // namespace genapi
