#include "system/RegistrySnapshot.h"

#include <algorithm>
#include <iterator>

namespace {

// Fixed by Windows: the longest name of a key, and of a value, with its terminator.
constexpr DWORD kKeyNameCapacity = 256;
constexpr DWORD kValueNameCapacity = 16384;

std::wstring Hexadecimal(const std::vector<BYTE>& data)
{
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    std::wstring text;
    for (const BYTE byte : data) {
        text.push_back(kDigits[byte / 16]);
        text.push_back(kDigits[byte % 16]);
    }
    return text;
}

} // namespace

RegistrySnapshot RegistrySnapshot::Take()
{
    RegistrySnapshot snapshot;
    snapshot.Read(HKEY_CURRENT_USER, L"", L"HKEY_CURRENT_USER");
    snapshot.Read(HKEY_LOCAL_MACHINE, L"SOFTWARE", L"HKEY_LOCAL_MACHINE\\SOFTWARE");
    return snapshot;
}

void RegistrySnapshot::Read(HKEY parent, const std::wstring& name, const std::wstring& path)
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return; // gone meanwhile, or not for us
    m_entries.insert(path);
    ReadValues(key, path);
    std::vector<wchar_t> child(kKeyNameCapacity);
    for (DWORD i = 0;; ++i) {
        DWORD length = kKeyNameCapacity;
        if (::RegEnumKeyExW(key, i, child.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            break;
        const std::wstring childName(child.data(), length);
        Read(key, childName, path + L"\\" + childName);
    }
    ::RegCloseKey(key);
}

void RegistrySnapshot::ReadValues(HKEY key, const std::wstring& path)
{
    DWORD largest = 0;
    ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &largest,
                       nullptr, nullptr);
    std::vector<wchar_t> name(kValueNameCapacity);
    std::vector<BYTE> data(largest);
    for (DWORD i = 0;; ++i) {
        DWORD nameLength = kValueNameCapacity;
        DWORD bytes = largest;
        DWORD type = 0;
        if (::RegEnumValueW(key, i, name.data(), &nameLength, nullptr, &type, data.data(), &bytes) !=
            ERROR_SUCCESS)
            break;
        m_entries.insert(path + L" : " + std::wstring(name.data(), nameLength) + L" = " +
                         std::to_wstring(type) + L" " +
                         Hexadecimal({data.begin(), data.begin() + static_cast<std::ptrdiff_t>(bytes)}));
    }
}

std::vector<std::wstring> RegistrySnapshot::Beyond(const RegistrySnapshot& other) const
{
    std::vector<std::wstring> entries;
    std::set_difference(m_entries.begin(), m_entries.end(), other.m_entries.begin(), other.m_entries.end(),
                        std::back_inserter(entries));
    return entries;
}
