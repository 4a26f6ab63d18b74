#pragma once

#include "VxBase/VxClock.h"

#include "VxCamera/wire/gvcp/CommandHeader.h"
#include "VxCamera/wire/gvcp/Datagram.h"

#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/stream/SeededRandomSource.h"

#include <optional>
#include <vector>

namespace simulator {

/// An answer and when it is sent.
struct TimedAnswer {
    IVxClock::Time due;
    gvcp::Datagram answer;
};

/// What goes wrong with commands and their answers. Discovery is spared, so that the camera is found.
///
/// Owner:  SimulatedDevice, by value.
/// Thread: one at a time; time is an argument.
class ControlFaults {
public:
    explicit ControlFaults(const VxSimulatorFaults& faults);

    /// @return  whether the command never arrives
    [[nodiscard]] bool LosesCommand(const gvcp::CommandPacket& command);

    /// @return  the refusal of a register that is to be refused
    [[nodiscard]] std::optional<gvcp::Datagram> Refusal(const gvcp::CommandPacket& command) const;

    /// @return  what is sent instead of the answer, the earliest first; the first may be due at once
    [[nodiscard]] std::vector<TimedAnswer> Pass(const gvcp::CommandPacket& command,
                                                const gvcp::Datagram& answer, IVxClock::Time now);

private:
    [[nodiscard]] bool TakesLong(const gvcp::CommandPacket& command) const;
    [[nodiscard]] gvcp::Datagram WithLengthError(const gvcp::Datagram& answer) const;

    const VxSimulatorFaults m_faults;
    SeededRandomSource m_random;
};

} // namespace simulator
