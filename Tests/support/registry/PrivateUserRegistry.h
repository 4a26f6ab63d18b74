#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

/// Gives this process a registry of its own behind HKEY_CURRENT_USER, empty at first and gone at the end.
///
/// Owner:  the test, by value, before anything that touches the registry.
/// Thread: the whole process is redirected; one at a time.
class PrivateUserRegistry {
public:
    /// Where all of them are. A process that was broken off leaves its own there.
    static constexpr const wchar_t* kPlaces = L"Software\\VxTests";

    PrivateUserRegistry() : m_path(std::wstring(kPlaces) + L"\\" + std::to_wstring(::GetCurrentProcessId()))
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0,
                                                   KEY_ALL_ACCESS, nullptr, &m_root, nullptr));
        EXPECT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(HKEY_CURRENT_USER, m_root));
    }

    ~PrivateUserRegistry()
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr));
        EXPECT_EQ(ERROR_SUCCESS, ::RegCloseKey(m_root));
        EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str()));
    }

    PrivateUserRegistry(const PrivateUserRegistry&) = delete;
    PrivateUserRegistry& operator=(const PrivateUserRegistry&) = delete;

private:
    std::wstring m_path;
    HKEY m_root = nullptr;
};
