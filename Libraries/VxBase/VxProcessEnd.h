#pragma once

#include <atomic>

/// Whether the process is ending under this module: the system has ended all other threads then, wherever
/// they were, so that what they shared may be half changed and locked for ever. An object that lives as long
/// as the module and is shared by threads leaves its memory to the system instead of taking itself apart.
///
/// A module that is unloaded while the process lives on, and a program that returns from main, end in order:
/// this stays false.
///
/// Thread: Begin by the module's entry point, HasBegun on any.
class VxProcessEnd final {
public:
    static void Begin() { s_hasBegun = true; }
    /// @return  true after Begin; and earlier where the system tells, as Windows does, so that it is known
    ///          while modules hear of the end that were loaded after this one
    [[nodiscard]] static bool HasBegun() { return s_hasBegun.load() || IsSystemEndingProcess(); }

private:
    [[nodiscard]] static bool IsSystemEndingProcess();

    static inline std::atomic<bool> s_hasBegun = false;
};
