#pragma once

#include "vxgrab/ComPtr.h"
#include "vxgrab/LoadedModule.h"

#include "VxDSSource/filter/IVxDSSource.h"

#include <filesystem>
#include <string>

/// VxDSSource.dll as it was built, used by its file: nothing is registered.
///
/// The file is named by the environment variable VX_MODULE, which the build sets.
///
/// Owner:  the test; must outlive every object made from it.
/// Thread: the test's.
class ModuleUnderTest final {
public:
    /// Loads the module; a failure is a failure of the test.
    ModuleUnderTest();
    /// By now every object of the module must be gone.
    ~ModuleUnderTest();
    ModuleUnderTest(const ModuleUnderTest&) = delete;
    ModuleUnderTest& operator=(const ModuleUnderTest&) = delete;

    /// @return  a new filter; null when it cannot be created, which is a failure of the test
    [[nodiscard]] vxgrab::ComPtr<IBaseFilter> CreateFilter() const;

    [[nodiscard]] const vxgrab::LoadedModule& Module() const { return m_module; }

    /// @return  whether no object of the module is left
    [[nodiscard]] bool IsUnused() const { return m_module.IsUnused(); }

    /// Where the module lies, as Windows writes it.
    [[nodiscard]] static std::filesystem::path File();

private:
    vxgrab::LoadedModule m_module;
};

/// @return  the filter's control interface; null when it has none, which is a failure of the test
[[nodiscard]] vxgrab::ComPtr<IVxDSSource> ControlOf(const vxgrab::ComPtr<IBaseFilter>& filter);

/// @return  an environment variable's text; empty when there is none
[[nodiscard]] std::wstring EnvironmentText(const wchar_t* name);

/// @return  a path that the build or a script gave, as Windows writes it
[[nodiscard]] std::filesystem::path WindowsPath(std::wstring text);
