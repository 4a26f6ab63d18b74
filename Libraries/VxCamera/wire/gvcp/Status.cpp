#include "VxCamera/wire/gvcp/Status.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

namespace gvcp {

namespace {

constexpr std::array kNames{
    std::pair{Status::Success, std::string_view("success")},
    std::pair{Status::PacketResend, std::string_view("packet sent again")},
    std::pair{Status::NotImplemented, std::string_view("not implemented")},
    std::pair{Status::InvalidParameter, std::string_view("invalid parameter")},
    std::pair{Status::InvalidAddress, std::string_view("invalid address")},
    std::pair{Status::WriteProtect, std::string_view("write protected")},
    std::pair{Status::BadAlignment, std::string_view("bad alignment")},
    std::pair{Status::AccessDenied, std::string_view("access denied")},
    std::pair{Status::Busy, std::string_view("busy")},
    std::pair{Status::LocalProblem, std::string_view("local problem")},
    std::pair{Status::MessageMismatch, std::string_view("message mismatch")},
    std::pair{Status::InvalidProtocol, std::string_view("invalid protocol")},
    std::pair{Status::NoMessage, std::string_view("no message")},
    std::pair{Status::PacketUnavailable, std::string_view("packet unavailable")},
    std::pair{Status::DataOverrun, std::string_view("data overrun")},
    std::pair{Status::InvalidHeader, std::string_view("invalid header")},
    std::pair{Status::WrongConfiguration, std::string_view("wrong configuration")},
    std::pair{Status::PacketNotYetAvailable, std::string_view("packet not yet available")},
    std::pair{Status::PacketAndPreviousRemoved, std::string_view("packet and all before it removed")},
    std::pair{Status::PacketRemoved, std::string_view("packet removed")},
    std::pair{Status::NoReferenceTime, std::string_view("no reference time")},
    std::pair{Status::PacketTemporarilyUnavailable, std::string_view("packet temporarily unavailable")},
    std::pair{Status::Overflow, std::string_view("overflow")},
    std::pair{Status::ActionLate, std::string_view("action late")},
    std::pair{Status::LeaderTrailerOverflow, std::string_view("leader or trailer overflow")},
    std::pair{Status::Error, std::string_view("error")},
};

} // namespace

std::string StatusText(Status status)
{
    const auto entry = std::ranges::find(kNames, status, [](const auto& pair) { return pair.first; });
    std::array<char, sizeof(" (0x0000)")> number{};
    std::snprintf(number.data(), number.size(), " (0x%04X)", static_cast<unsigned>(status));
    return std::string(entry != kNames.end() ? entry->second : "unknown status") + number.data();
}

} // namespace gvcp
