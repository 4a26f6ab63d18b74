#pragma once

#include <windows.h>

namespace pages {

/// Dialogs that are made in this scope have the common controls that the module's manifest names, whatever
/// the host program has. Where the system refuses, they have the host's.
///
/// Owner:  a function, by value.
/// Thread: the one that makes it; scopes nest.
class CommonControlsScope final {
public:
    CommonControlsScope();
    ~CommonControlsScope();
    CommonControlsScope(const CommonControlsScope&) = delete;
    CommonControlsScope& operator=(const CommonControlsScope&) = delete;

private:
    HANDLE m_context;       // INVALID_HANDLE_VALUE: none
    ULONG_PTR m_cookie = 0; // 0: not activated
};

} // namespace pages
