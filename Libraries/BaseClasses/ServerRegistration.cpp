#include "BaseClasses/ServerRegistration.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/FilterRegistration.h"

#include <objbase.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

// Fixed by COM: a text of braces, hyphens, 32 digits, and the terminator.
constexpr int kGuidTextUnits = 39;

/// Path of a module, however long.
HRESULT ModulePath(HINSTANCE module, std::wstring& path)
{
    path.resize(MAX_PATH);
    for (;;) {
        const auto room = static_cast<DWORD>(path.size());
        const DWORD units = ::GetModuleFileNameW(module, path.data(), room);
        if (units == 0)
            return HRESULT_FROM_WIN32(::GetLastError());
        if (units < room) {
            path.resize(units);
            return S_OK;
        }
        path.resize(path.size() * 2); // cut: there was no room for all of it
    }
}

std::wstring ClassKey(REFCLSID clsid)
{
    WCHAR text[kGuidTextUnits] = {};
    ::StringFromGUID2(clsid, text, kGuidTextUnits);
    return std::wstring(L"CLSID\\") + text;
}

/// Creates the key if necessary.
/// @param name  null = the key's default value
LSTATUS WriteText(HKEY root, const std::wstring& key, LPCWSTR name, const std::wstring& text)
{
    HKEY opened = nullptr;
    const LSTATUS status = ::RegCreateKeyExW(root, key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                             KEY_SET_VALUE, nullptr, &opened, nullptr);
    if (status != ERROR_SUCCESS)
        return status;
    const auto bytes =
        static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)); // paths and names: far below 4 GB
    const LSTATUS written =
        ::RegSetValueExW(opened, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), bytes);
    ::RegCloseKey(opened);
    return written;
}

LSTATUS RegisterClass(HKEY root, const CFactoryTemplate& row, const std::wstring& path)
{
    const std::wstring key = ClassKey(*row.m_ClsID);
    const std::wstring server = key + L"\\InprocServer32";
    LSTATUS status = WriteText(root, key, nullptr, row.m_Name);
    if (status == ERROR_SUCCESS)
        status = WriteText(root, server, nullptr, path);
    if (status == ERROR_SUCCESS)
        status = WriteText(root, server, L"ThreadingModel", L"Both");
    return status;
}

HRESULT RegisterClasses(const VxServerRegistration& registration)
{
    std::wstring path;
    const HRESULT found = ModulePath(registration.module, path);
    if (FAILED(found))
        return found;
    for (const CFactoryTemplate& row : registration.classes) {
        const LSTATUS status = RegisterClass(registration.classesRoot, row, path);
        if (status != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(status);
    }
    return S_OK;
}

HRESULT UpdateFilters(const VxServerRegistration& registration, VxRegistrationStep step)
{
    std::vector<const AMOVIESETUP_FILTER*> filters;
    for (const CFactoryTemplate& row : registration.classes) {
        if (row.m_pAMovieSetup_Filter != nullptr)
            filters.push_back(row.m_pAMovieSetup_Filter);
    }
    return VxRegisterFilters(filters, step, registration.mappers);
}

} // namespace

HRESULT VxRegisterServer(const VxServerRegistration& registration)
{
    return AtComEdge([&]() -> HRESULT {
        const HRESULT hr = RegisterClasses(registration);
        return FAILED(hr) ? hr : UpdateFilters(registration, VxRegistrationStep::Register);
    });
}

HRESULT VxUnregisterServer(const VxServerRegistration& registration)
{
    return AtComEdge([&]() -> HRESULT {
        const HRESULT hr = UpdateFilters(registration, VxRegistrationStep::Unregister);
        if (FAILED(hr))
            return hr;
        for (const CFactoryTemplate& row : registration.classes)
            std::ignore =
                ::RegDeleteTreeW(registration.classesRoot, ClassKey(*row.m_ClsID).c_str()); // may be gone
        return S_OK;
    });
}
