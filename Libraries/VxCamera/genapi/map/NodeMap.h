#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"
#include "VxCamera/genapi/node/NodeTypes.h"
#include "VxCamera/genapi/xml/Description.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace genapi {

class IRegisterPort;
class NodeMapImpl;

/// A feature: a node that a user meets by walking down from the category "Root".
struct Feature {
    NodeId node{};
    std::string category; ///< "root", "root\AnalogControl", "root\AnalogControl\BlackLevels"
};

/// How registers of old descriptions are read.
enum class RegisterOrder {
    AsDescribed,
    BigEndianBelowSchema11, ///< GigE Vision: 4-byte registers are big-endian numbers when the schema is older
                            ///< than 1.1
    BigEndian,              ///< the same whatever the schema says: for cameras that lie about it
};

/// Data of a camera that came with an image instead of being read from its registers.
struct Chunk {
    std::uint64_t id = 0;
    std::span<const std::byte> bytes; ///< borrowed for the call
};

/// A camera's features, described by its GenICam XML and living in its registers.
///
/// A node that is broken in the description (a reference to a node that is not there, a number that is none)
/// is not implemented, and a notice says why; the rest of the map works.
///
/// A port that is closed ends the use of all features; what the description says of them remains.
///
/// Values are kept as the description says (Cachable, PollingTime, invalidators): one whose polling time has
/// passed is read from the camera again when it is asked for.
///
/// Owner:  whoever loaded it. Borrows the port and the clock.
/// Thread: any. One recursive lock per map; it is held while the port works, so a slow camera makes other
///         users of the same map wait, and nothing else.
class NodeMap {
public:
    /// Reads a description and makes its node map. No register is read.
    /// @param file  the file's bytes, see Description::Parse
    /// @param clock  null: values with a polling time are never kept
    /// @return  INVALID_DATA with the place of the fault for a text that is no camera description
    [[nodiscard]] static VxExpected<std::unique_ptr<NodeMap>>
    Load(std::string_view file, IRegisterPort& port, RegisterOrder order = RegisterOrder::AsDescribed,
         const IVxClock* clock = nullptr);

    /// The same for a description that was read before.
    [[nodiscard]] static VxExpected<std::unique_ptr<NodeMap>>
    Create(std::shared_ptr<const Description> description, IRegisterPort& port,
           RegisterOrder order = RegisterOrder::AsDescribed, const IVxClock* clock = nullptr);

    ~NodeMap();
    NodeMap(const NodeMap&) = delete;
    NodeMap& operator=(const NodeMap&) = delete;

    /// Features in the order in which the categories name them, depth first, each once.
    [[nodiscard]] const std::vector<Feature>& Features() const;

    /// Number of nodes; ids are 0 to this - 1. Includes nodes without a name and entries of enumerations.
    [[nodiscard]] std::size_t NodeCount() const;

    /// @param name  case-sensitive; nodes outside every category are found as well
    [[nodiscard]] std::optional<NodeId> Find(std::string_view name) const;

    [[nodiscard]] const NodeInfo& Info(NodeId node) const;
    [[nodiscard]] const std::vector<Notice>& Notices() const;

    /// For descriptions that are wrong about their camera. Both forget all values.
    void SetRegisterOrder(RegisterOrder order);
    [[nodiscard]] RegisterOrder Order() const;

    /// @param isOn  false: every read asks the camera, also where the description says that a value keeps
    void SetCaching(bool isOn);
    [[nodiscard]] bool IsCaching() const;

    /// Keeps other threads off this map for as long as the returned lock lives: for a sequence of calls that
    /// belong together, such as a selector and what it selects.
    [[nodiscard]] std::unique_lock<std::recursive_mutex> Hold() const;

    /// @return  why no feature can be used any more, for instance LINK_LOST; OK while the port leads to a
    /// camera
    [[nodiscard]] VxResult CloseReason() const;

    /// Access in the present state of the camera; reads what the description makes it depend on. Of a camera
    /// that is gone nothing is available.
    [[nodiscard]] AccessMode Access(NodeId node);

    // Values. Once the port is closed, all of these fail at once with its reason, for values that are kept
    // and for those without a register as well. Else NOT_AVAILABLE, NOT_READABLE, NOT_WRITABLE, OUT_OF_RANGE,
    // TYPE_MISMATCH or INVALID_DATA with a sentence that names the feature and says what would be accepted,
    // or the port's result. An integer can be read from and written to booleans (0, 1), enumerations (the
    // entry's number) and floats (rounded) as well, a float the same way.

    [[nodiscard]] VxExpected<std::int64_t> GetInteger(NodeId node);
    [[nodiscard]] VxResult SetInteger(NodeId node, std::int64_t value);
    [[nodiscard]] VxExpected<IntegerLimits> GetIntegerLimits(NodeId node);

    [[nodiscard]] VxExpected<double> GetFloat(NodeId node);
    [[nodiscard]] VxResult SetFloat(NodeId node, double value);
    [[nodiscard]] VxExpected<FloatLimits> GetFloatLimits(NodeId node);

    [[nodiscard]] VxExpected<bool> GetBoolean(NodeId node);
    [[nodiscard]] VxResult SetBoolean(NodeId node, bool value);

    /// Starts a command; does not wait for its end.
    [[nodiscard]] VxResult Execute(NodeId node);
    [[nodiscard]] VxExpected<bool> IsDone(NodeId node);

    /// Entries of an enumeration in the description's order, available or not; each is a node of type None.
    [[nodiscard]] std::span<const NodeId> Entries(NodeId enumeration) const;
    /// @return  the symbolic name of an entry, for instance "Continuous"
    [[nodiscard]] std::string_view EntryName(NodeId entry) const;
    [[nodiscard]] std::int64_t EntryValue(NodeId entry) const;
    /// @return  the entry in force; INVALID_DATA when the camera's number has no entry
    [[nodiscard]] VxExpected<NodeId> GetEntry(NodeId enumeration);
    /// @param name  symbolic name of an entry that is available
    [[nodiscard]] VxResult SetEntry(NodeId enumeration, std::string_view name);

    /// Text of a String feature, UTF-8.
    [[nodiscard]] VxExpected<std::string> GetString(NodeId node);
    [[nodiscard]] VxResult SetString(NodeId node, std::string_view value);

    /// Bytes of any node that stands for a register.
    [[nodiscard]] VxExpected<std::vector<std::byte>> GetBytes(NodeId node);
    [[nodiscard]] VxResult SetBytes(NodeId node, std::span<const std::byte> bytes);

    /// Value of any type as text and back: integers as their representation asks, floats in the shortest form
    /// that reads back the same, "true" and "false", entry names, hexadecimal bytes; "" for commands, which
    /// any text executes; of a category its name.
    [[nodiscard]] VxExpected<std::string> ToText(NodeId node);
    [[nodiscard]] VxResult FromText(NodeId node, std::string_view text);

    /// Features that show another value when this one changes, and features that change this one.
    [[nodiscard]] std::span<const NodeId> Selected(NodeId selector) const;
    [[nodiscard]] std::span<const NodeId> Selectors(NodeId selected) const;

    /// A node that describes the same in another way, such as the raw number of a float, and one that gives
    /// the value as another type.
    [[nodiscard]] std::optional<NodeId> Alias(NodeId node) const;
    [[nodiscard]] std::optional<NodeId> CastAlias(NodeId node) const;

    /// @return  how often the value is worth reading again, in milliseconds; 0: the description does not say
    [[nodiscard]] std::uint32_t PollingMs(NodeId node) const;

    /// Forgets every value read so far, for instance after the link was lost.
    void InvalidateAll();

    /// Puts the chunks of an image behind the chunk ports, instead of those of the image before. Copies the
    /// bytes.
    void AttachChunks(std::span<const Chunk> chunks);

    /// Puts the data of an event behind the ports for it, and forgets the values that change with it. Copies
    /// the bytes.
    void AttachEvent(std::uint64_t id, std::span<const std::byte> bytes);

private:
    explicit NodeMap(std::unique_ptr<NodeMapImpl> impl);
    std::unique_ptr<NodeMapImpl> m_impl;
};

} // namespace genapi
