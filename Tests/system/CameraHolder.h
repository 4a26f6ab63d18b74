#pragma once

#include <cstdint>
#include <string>

/// Takes control of a camera, directs its stream to a receiver or a group that others listen to, starts it,
/// and says "streaming"; then keeps control until the process is ended.
/// @return  only when something failed: false
[[nodiscard]] bool HoldCamera(const std::string& camera, const std::string& destination, std::uint16_t port);
