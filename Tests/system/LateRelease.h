#pragma once

/// When a host's module was loaded that holds a filter until the process ends. Modules hear of the end in the
/// reverse order of loading.
enum class HostModule {
    Before, ///< ... the filter's module, which has heard of the end when the filter is let go
    After,  ///< ... the filter's module, which has not
};

/// Lets a filter wait for a camera's frames, and ends the process with it: a module of the host lets it go
/// while the process is ending. Prints each step, "released" when that is done.
/// @return  only when something failed before: false
[[nodiscard]] bool EndProcessAndReleaseFilter(HostModule host);
