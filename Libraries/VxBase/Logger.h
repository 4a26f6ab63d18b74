#pragma once

#include <functional>
#include <string_view>

namespace ZtUtilsLib {

/// The logger of the utility library: messages at or above a threshold go to one sink.
///
/// Nothing is written until a program sets a sink; the module itself logs nothing in normal operation.
///
/// Thread: all functions may be called from any thread. The sink is called with no lock held and must be
/// thread-safe.
class Logger {
public:
    using Sink = std::function<void(int priority, std::string_view file, int line, std::string_view function,
                                    std::string_view message)>;

    /// @return  whether messages of this priority are written: there is a sink and priority >= threshold
    [[nodiscard]] static bool IsPriorityEnabled(int priority);

    /// Writes one message if its priority is enabled.
    /// @param format  printf-style; the message has no length limit
    static void Log(int priority, const char* file, int line, const char* function, const char* format, ...)
        __attribute__((format(printf, 5, 6)));

    /// @param sink  empty: nothing is written any more
    static void SetSink(Sink sink, int threshold);
};

} // namespace ZtUtilsLib
