#pragma once

#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/stream/IRandomSource.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <vector>

namespace simulator {

/// A bad network: packets go in, and what is left of them comes out.
///
/// Owner:  VxSimulatedCamera, by value.
/// Thread: one at a time.
class FaultyPath {
public:
    using Output = std::function<void(std::span<const std::byte>)>;

    /// @param random  borrowed: outlives this
    FaultyPath(const VxSimulatorFaults& faults, IRandomSource& random);

    /// One packet goes in; none, it, or several come out.
    void Pass(std::span<const std::byte> packet, const Output& output);

    /// Lets out what is still held back: at the end of a block.
    void Flush(const Output& output);

    /// Decides about one packet, also one that is sent again.
    /// @return  whether it gets lost
    [[nodiscard]] bool Loses(std::span<const std::byte> packet);

    /// Whether the network cannot carry the packet; chance has no part in it.
    [[nodiscard]] bool IsTooLarge(std::span<const std::byte> packet) const;

    [[nodiscard]] std::uint64_t Dropped() const { return m_dropped; }

    // Chosen: later than a receiver tolerates as mere reordering, but inside a frame of some hundred packets.
    static constexpr unsigned kDelayPackets = 20;

private:
    struct Held {
        std::vector<std::byte> packet;
        unsigned packetsToGo;
    };
    [[nodiscard]] bool Happens(double share);
    void Hold(std::span<const std::byte> packet, unsigned packets);

    VxSimulatorFaults m_faults;
    IRandomSource& m_random; // borrowed, see the constructor
    std::deque<Held> m_held;
    std::uint64_t m_dropped = 0;
};

} // namespace simulator
