#pragma once

#include <chrono>

namespace control {

/// How long a command waits for its acknowledge, and how often it is sent.
struct CommandSettings {
    // Chosen: with the retries below a camera that hangs for a second is not given up, and one that is gone
    // is noticed before a user takes the program for dead.
    std::chrono::milliseconds ackTimeout{300}; ///< for each try
    unsigned retries = 3;                      ///< further tries after the first one
};

} // namespace control
