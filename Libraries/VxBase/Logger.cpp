#include "VxBase/Logger.h"

#include "VxBase/VxMutex.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>

namespace ZtUtilsLib {

namespace {

struct Target {
    Logger::Sink sink;
    int threshold = 0;
};

VxMutex g_mutex;
std::shared_ptr<const Target> g_target VX_GUARDED_BY(g_mutex); // shared with a Log call that is under way

std::shared_ptr<const Target> CurrentTarget(int priority)
{
    const VxLock lock(g_mutex);
    const bool isEnabled = g_target && g_target->sink && priority >= g_target->threshold;
    return isEnabled ? g_target : nullptr;
}

std::string Format(const char* format, va_list arguments)
{
    va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0)
        return {};
    std::string text(static_cast<std::size_t>(length), '\0'); // not negative, tested above
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

} // namespace

bool Logger::IsPriorityEnabled(int priority)
{
    return CurrentTarget(priority) != nullptr;
}

void Logger::Log(int priority, const char* file, int line, const char* function, const char* format, ...)
{
    const auto target = CurrentTarget(priority);
    if (!target)
        return;
    va_list arguments;
    va_start(arguments, format);
    const std::string message = Format(format, arguments);
    va_end(arguments);
    target->sink(priority, file, line, function, message);
}

void Logger::SetSink(Sink sink, int threshold)
{
    auto target = std::make_shared<const Target>(Target{std::move(sink), threshold});
    const VxLock lock(g_mutex);
    g_target = std::move(target);
}

} // namespace ZtUtilsLib
