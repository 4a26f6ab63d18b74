#pragma once

#include <atomic>
#include <cstdint>

namespace receive {

/// A number that one thread raises and any thread reads or sets back.
class Counter {
public:
    void Add(std::uint64_t amount = 1) { m_value.fetch_add(amount, std::memory_order_relaxed); }
    [[nodiscard]] std::uint64_t Value() const { return m_value.load(std::memory_order_relaxed); }
    void Reset() { m_value.store(0, std::memory_order_relaxed); }

private:
    std::atomic<std::uint64_t> m_value = 0;
};

/// What became of every packet and block; whatever is not delivered has a name here.
///
/// Owner:  the stream, by value.
/// Thread: any.
struct StreamCounters {
    Counter packets; ///< of the camera, of any kind
    Counter bytes;   ///< in them, GVSP headers included

    // Packets that did not get into a block.
    Counter packetsForeign;     ///< of another sender than the camera
    Counter packetsMalformed;   ///< too short for what they say they are
    Counter packetsUnsupported; ///< of a kind that this library does not read
    Counter packetsTest;        ///< test packets: no part of a block
    Counter packetsErrorStatus; ///< the camera marked them as an error
    Counter packetsDuplicate;   ///< received before
    Counter packetsLate;        ///< of a block that was finished before
    Counter packetsOutOfRange;  ///< outside their block
    Counter packetsWrongSize;   ///< longer or shorter than the others of their block
    Counter packetsUnbuffered;  ///< of a block for which no buffer was free

    // Resend.
    Counter resendRequests;        ///< datagrams to the camera
    Counter packetsRequestedAgain; ///< packets in them, repetitions included
    Counter packetsRecovered;      ///< that arrived after they had been asked for
    Counter packetsRefused;        ///< that the camera could not send again

    // Blocks.
    Counter blocksComplete;
    Counter blocksIncomplete;     ///< delivered with packets missing
    Counter blocksBufferTooSmall; ///< delivered without picture
    Counter blocksNotAnImage;     ///< delivered without picture
    Counter blocksDamaged;        ///< the camera itself lost data, or the leader makes no sense; delivered
    Counter blocksUnbuffered;     ///< not delivered: no buffer was free
    Counter blocksLost;           ///< not one packet arrived: gaps in the block ids
    Counter packetsMissing;       ///< in incomplete blocks

    void Reset();
};

} // namespace receive
