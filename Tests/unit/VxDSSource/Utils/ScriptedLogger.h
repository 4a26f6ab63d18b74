#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// Stands in for the logger in the program that it is linked into: records every call in order, and writes
/// also what is not enabled. The real one drops that by itself, so with it nobody could see who forgot to
/// ask.
///
/// Owner:  the program (TheLogger); a test starts by assigning a new one.
/// Thread: one at a time.
struct ScriptedLogger {
    /// Answers the question of this number, counted from 0; empty: everything is enabled.
    std::function<bool(std::size_t question)> isEnabled;

    std::vector<std::string> calls; ///< a record with its format, not with its values
    std::size_t questions = 0;
};

/// The one logger of this program.
[[nodiscard]] ScriptedLogger& TheLogger();
