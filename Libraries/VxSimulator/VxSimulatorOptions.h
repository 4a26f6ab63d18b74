#pragma once

#include "VxCamera/transport/Ipv4Address.h"
#include "VxCamera/wire/gvcp/Command.h"
#include "VxCamera/wire/gvcp/Status.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// What the simulated camera does wrong, by chance that is the same for the same seed. Shares are from 0
/// to 1.
struct VxSimulatorFaults {
    std::uint64_t seed = 1;
    double dropShare = 0;      ///< stream packets that are not sent, those sent again included
    double duplicateShare = 0; ///< stream packets that are sent twice
    double reorderShare = 0;   ///< stream packets that change places with the next one
    double delayShare = 0;     ///< stream packets that come 20 packets later
    /// The network carries no larger ones: bytes with the headers of IP and UDP. None: any.
    std::optional<std::size_t> largestPacketBytes{};
    /// For how long packets can be sent again. None: for as long as the block is stored, 160 ms or four
    /// blocks.
    std::optional<std::chrono::milliseconds> resendMemory{};
    /// After so many frames the camera is as if switched off: no packet, no answer. None: never.
    std::optional<std::uint64_t> vanishAfterFrames{};
    /// After so many frames the camera starts anew: it is away for a while, and then nobody controls it and
    /// every register is as at first. None: never.
    std::optional<std::uint64_t> rebootAfterFrames{};

    // Of commands other than discovery.
    double dropCommandShare = 0;              ///< commands that do not arrive
    double dropAnswerShare = 0;               ///< commands that are done, but whose answer does not arrive
    std::chrono::milliseconds answerDelay{0}; ///< each answer comes so much later
    /// Each write takes so long, which a PENDING_ACK announces; 0: none does. At most 65535.
    std::chrono::milliseconds pendingTime{0};
    std::optional<std::uint32_t> pendingAddress{}; ///< register whose writing takes so long; none: every one
    std::optional<std::uint32_t>
        refusedAddress{}; ///< register whose reading and writing is refused; none: no one
    gvcp::Status refusal = gvcp::Status::AccessDenied; ///< how it is refused
    int answerLengthError = 0;               ///< added to the number of bytes that an answer says it has
    std::int64_t descriptionLengthError = 0; ///< added to the length that the description's URL tells
};

/// How the simulated camera is set up when it starts.
struct VxSimulatorOptions {
    transport::Ipv4Address address = transport::Ipv4Address::Loopback(); ///< one of this machine's addresses
    std::uint16_t controlPort = gvcp::kPort; ///< 0: any free one; only a camera at 3956 is found by discovery

    std::string manufacturerName = "Vexa";
    std::string modelName = "SimulatedCamera";
    std::string serialNumber{};    ///< empty: made from the MAC
    std::string userDefinedName{}; ///< may be empty
    std::optional<std::array<std::uint8_t, 6>>
        mac; ///< none: a locally administered one made from the address

    std::uint32_t widthPx = 640;            ///< 128 to 16384, a multiple of 4
    std::uint32_t heightPx = 480;           ///< 64 to 16384, a multiple of 2
    std::uint32_t pixelFormat = 0x01080001; ///< PFNC code; Mono8
    double frameRateHz = 25;                ///< 0.1 to 1000
    std::uint32_t linkSpeedMbps = 1000;     ///< packets are not sent faster
    /// Packets that are due at the same moment go to the system in one call, where it takes them so. It may
    /// then hand them to a receiver as a real network card does: many at once. Loopback hands such a run as
    /// one long packet to programs that listen below UDP, which no camera's packets look like there.
    bool isSendingRuns = false;
    std::optional<std::uint64_t>
        frameLimit;             ///< after so many frames the camera sends no more; none: without end
    bool hasSources = true;     ///< whether the feature list has SourceSelector
    bool hasTestPackets = true; ///< whether the camera sends a test packet when it is asked to
    /// As some cameras do, it tells the port from which it sends only while the stream channel is open.
    bool isSourcePortToldLate = false;
    std::size_t descriptionBytes = 0; ///< the feature description is filled up to so many; 0: as it is

    VxSimulatorFaults faults{};
};
