#pragma once

#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/wire/gvcp/Datagram.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <span>

namespace simulator {

/// Remembers the last command of each application that changed something, and its answer: when the answer was
/// lost and the application repeats the command, it is answered again and not done twice.
///
/// Owner:  ControlServer, by value.
/// Thread: one at a time.
class AnswerMemory {
public:
    /// @return  the answer, when this very datagram was the application's last one
    [[nodiscard]] std::optional<gvcp::Datagram> AnswerFor(const transport::Ipv4Endpoint& application,
                                                          std::span<const std::byte> command) const;

    void Remember(const transport::Ipv4Endpoint& application, std::span<const std::byte> command,
                  const gvcp::Datagram& answer);

    // Chosen: only one application has control at a time; the others are refused anyway.
    static constexpr std::size_t kApplications = 8;

private:
    struct Entry {
        transport::Ipv4Endpoint application;
        gvcp::Datagram command;
        gvcp::Datagram answer;
    };
    std::deque<Entry> m_entries; // one per application, the oldest first
};

} // namespace simulator
