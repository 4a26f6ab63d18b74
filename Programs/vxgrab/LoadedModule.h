#pragma once

#include "vxgrab/ComPtr.h"

#include "VxBase/VxExpected.h"

#include <windows.h>

#include <strmif.h>

#include <filesystem>

namespace vxgrab {

/// A COM module that is used by its file, without registration.
///
/// Owner:  the caller, by value; must outlive every object made from it.
/// Thread: the thread that loaded it.
class LoadedModule final {
public:
    LoadedModule() = default;
    ~LoadedModule();
    LoadedModule(LoadedModule&& other) noexcept;
    LoadedModule& operator=(LoadedModule&& other) noexcept;
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    /// Loads a module and finds its class objects.
    /// @return  the module, or why it cannot be used
    [[nodiscard]] static VxExpected<LoadedModule> Load(const std::filesystem::path& file);

    /// Finds what makes objects of a class of the module.
    [[nodiscard]] VxExpected<ComPtr<IClassFactory>> FindClass(REFCLSID classId) const;

    /// Creates one object of a class of the module.
    [[nodiscard]] VxExpected<ComPtr<IBaseFilter>> CreateFilter(REFCLSID classId) const;

    /// @return  whether every object made from the module is gone
    [[nodiscard]] bool IsUnused() const;

private:
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, LPVOID*);
    using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();

    HMODULE m_module = nullptr;
    GetClassObject m_getClassObject = nullptr;
    CanUnloadNow m_canUnloadNow = nullptr;
};

} // namespace vxgrab
