#pragma once

#include <memory>

namespace transport {

/// Lets the calling thread go before others for as long as the object lives, as far as the system permits:
/// the system's buffer for packets is emptied in time also while the machine is busy.
///
/// Owner:  the thread, on its stack.
/// Thread: the one that made it.
class IRaisedPriority {
public:
    IRaisedPriority() = default;
    IRaisedPriority(const IRaisedPriority&) = delete;
    IRaisedPriority& operator=(const IRaisedPriority&) = delete;
    virtual ~IRaisedPriority() = default;
};

/// @return  null when the system does not permit it, which is no error
[[nodiscard]] std::unique_ptr<IRaisedPriority> RaiseThreadPriority();

} // namespace transport
