#pragma once

#include "BaseClasses/VxComPtr.h"

#include <windows.h>

#include <string>

/// A COM module, loaded without being registered.
///
/// Owner:  the test.
/// Thread: the test's.
class ConformanceModule final {
public:
    /// @param dll  path from the test program's folder
    explicit ConformanceModule(const std::wstring& dll);
    ~ConformanceModule();
    ConformanceModule(const ConformanceModule&) = delete;
    ConformanceModule& operator=(const ConformanceModule&) = delete;

    [[nodiscard]] static std::wstring FullPath(const std::wstring& dll);

    [[nodiscard]] bool IsLoaded() const { return m_module != nullptr; }

    /// Creates an object as COM does.
    HRESULT Create(REFCLSID clsid, IUnknown* outer, REFIID riid, void** object) const;

    /// The module's DllCanUnloadNow.
    [[nodiscard]] HRESULT CanUnload() const;

    /// DllRegisterServer or DllUnregisterServer.
    HRESULT Call(const char* function) const;

private:
    HMODULE m_module;
};
