#include "ScriptedLogger.h"

#include "VxBase/Logger.h"

ScriptedLogger& TheLogger()
{
    static ScriptedLogger logger;
    return logger;
}

namespace ZtUtilsLib {

bool Logger::IsPriorityEnabled(int priority)
{
    ScriptedLogger& logger = TheLogger();
    logger.calls.push_back("IsPriorityEnabled(" + std::to_string(priority) + ")");
    const std::size_t question = logger.questions++;
    return !logger.isEnabled || logger.isEnabled(question);
}

void Logger::Log(int priority, const char*, int, const char*, const char* format, ...)
{
    TheLogger().calls.push_back("Log(" + std::to_string(priority) + ", \"" + format + "\")");
}

} // namespace ZtUtilsLib
