#pragma once

#include "VxCamera/genapi/node/BitField.h"
#include "VxCamera/genapi/node/Node.h"
#include "VxCamera/genapi/node/PortNode.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace genapi {

/// Bytes at an address, with a memory of what was read there last: kind "Register", and what the kinds of
/// registers with a typed value have in common.
///
/// Owner and thread: see Node.
class RegisterNode : public Node {
public:
    using Node::Node;

    /// What was read from or written to the camera last.
    struct Place {
        const PortNode* port = nullptr; ///< null for the camera's own registers, however they are reached
        WideAddress address = 0;
        std::size_t length = 0;
    };
    [[nodiscard]] Place LastPlace() const;

    [[nodiscard]] bool IsCached() const { return m_isCached; }
    void DropCache() { m_isCached = false; }

    /// Shortens the time for which the register's value may be kept.
    /// @param milliseconds  0: changes nothing
    /// @param block  while it is not 0, this time does not count; null: it always counts; borrowed from the
    /// map
    void PollAtLeastEvery(std::uint32_t milliseconds, Node* block);

    /// Puts the camera's own port into effect for a register that names none.
    void SetDefaultPort(PortNode& port);

    [[nodiscard]] CachingMode Caching() const { return m_caching; }

protected:
    enum class Freshness : std::uint8_t { MayBeCached, FromCamera };

    void Apply(const NodeProperty& property) override;
    void Finish() override;
    [[nodiscard]] AccessMode OwnAccess() override;
    [[nodiscard]] VxExpected<std::vector<std::byte>> DoGetBytes() override;
    [[nodiscard]] VxResult DoSetBytes(std::span<const std::byte> bytes) override;

    [[nodiscard]] VxExpected<std::size_t> Length();
    /// @return  the length when it is a number in the description
    [[nodiscard]] std::optional<std::size_t> FixedLength() const { return m_length; }
    [[nodiscard]] ByteOrder Order(std::size_t length) const;
    [[nodiscard]] AccessMode RegisterAccess() const { return m_access; }

    /// @return  the register's bytes; valid until the next use of the node
    [[nodiscard]] VxExpected<std::span<const std::byte>> Load(Freshness freshness = Freshness::MayBeCached);
    /// @param bytes  as many as the register has
    [[nodiscard]] VxResult Store(std::span<const std::byte> bytes);

private:
    /// How long a value may be kept.
    struct PollingTime {
        std::uint32_t milliseconds = 0; // 0: for ever
        Node* block = nullptr;          // borrowed from the map

        void Shorten(std::uint32_t other, Node* otherBlock);
    };

    /// A part of the address that a node gives.
    struct AddressTerm {
        Node* node = nullptr; // borrowed from the map
        std::int64_t factor = 1;
        Node* factorNode = nullptr; // borrowed from the map; if not null it is the factor
        bool isFactorLength = false;
    };

    bool ApplyAddress(const NodeProperty& property);
    void AddIndex(const NodeProperty& property);
    [[nodiscard]] VxExpected<WideAddress> Address(std::size_t length);
    [[nodiscard]] VxExpected<WideAddress> TermValue(const AddressTerm& term, std::size_t length);
    [[nodiscard]] VxResult ReadPort(WideAddress address, std::span<std::byte> bytes);
    [[nodiscard]] VxResult WritePort(WideAddress address, std::span<const std::byte> bytes);
    [[nodiscard]] VxResult PortError(const VxResult& result, std::string_view action, WideAddress address,
                                     std::size_t length) const;
    [[nodiscard]] bool MayKeep() const;
    void Keep();
    [[nodiscard]] bool IsFresh();
    [[nodiscard]] bool IsOver(const PollingTime& time, IVxClock::Time now) const;
    void SpendFor(std::size_t bytes) const;

    WideAddress m_address = 0;
    std::vector<AddressTerm> m_terms;
    std::optional<std::size_t> m_length;
    Node* m_lengthNode = nullptr; // borrowed from the map
    PortNode* m_port = nullptr;   // borrowed from the map; null: the camera's own registers
    AccessMode m_access = AccessMode::ReadOnly;
    CachingMode m_caching = CachingMode::WriteThrough;
    ByteOrder m_order = ByteOrder::LittleEndian;
    PollingTime m_polling;        // always counts
    PollingTime m_blockedPolling; // counts while its block is 0
    IVxClock::Time m_readAt{};    // while m_isCached, if there is a polling time

    bool m_isCached = false;
    WideAddress m_lastAddress = 0;
    std::vector<std::byte> m_bytes; // at m_lastAddress, while m_isCached
};

} // namespace genapi
