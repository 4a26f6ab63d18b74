#pragma once

#include "VxCamera/transport/ThreadPriority.h"
#include "VxCamera/transport/win/IThreadClass.h"

#include <memory>

namespace transport {

/// The same, with this class of threads. Where it refuses, the thread's own priority is raised.
[[nodiscard]] std::unique_ptr<IRaisedPriority> RaiseThreadPriority(std::unique_ptr<IThreadClass> threadClass);

} // namespace transport
