#pragma once

#include "vxgrab/ComPtr.h"

#include <windows.h>

#include <strmif.h>

/// The module as it was built, entered into the registry, so that CoCreateInstance finds it as for any
/// application.
///
/// Owner:  a benchmark's main function.
/// Thread: one; COM is initialised for as long as it lives.
class RegisteredModule final {
public:
    /// Registers the file bin\VxDSSource.dll beside the folder of the benchmark. Ends the program with a
    /// message when that fails.
    /// @param program  argv[0]
    explicit RegisteredModule(const char* program);
    /// Takes it out of the registry again.
    ~RegisteredModule();
    RegisteredModule(const RegisteredModule&) = delete;
    RegisteredModule& operator=(const RegisteredModule&) = delete;

    /// @return  a new filter by CoCreateInstance; null when that fails
    [[nodiscard]] static vxgrab::ComPtr<IBaseFilter> CreateFilter();

    /// Lets the system take the module out of memory, if nothing of it is in use.
    void Unload();

private:
    HMODULE m_module = nullptr; // null after Unload: COM loads it by itself
    wchar_t m_file[MAX_PATH] = {};
};
