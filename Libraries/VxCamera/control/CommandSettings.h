#pragma once

#include <chrono>

namespace control {

/// How long a command waits for its acknowledge, and how often it is sent.
struct CommandSettings {
    // Chosen: with the retries below a camera that hangs for most of a second is not given up, and stopping a
    // graph whose camera is gone stays well within two.
    std::chrono::milliseconds ackTimeout{200}; ///< for each try
    unsigned retries = 3;                      ///< further tries after the first one
};

} // namespace control
