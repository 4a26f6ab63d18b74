#include "VxDSSource/filter/RegistryKey.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vxds {

RegistryKey RegistryKey::Open(const wchar_t* path, REGSAM access)
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, access, &key) != ERROR_SUCCESS)
        return RegistryKey(nullptr);
    return RegistryKey(key);
}

RegistryKey RegistryKey::Create(const wchar_t* path)
{
    HKEY key = nullptr;
    const LSTATUS status = ::RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                             KEY_ALL_ACCESS, nullptr, &key, nullptr);
    return RegistryKey(status == ERROR_SUCCESS ? key : nullptr);
}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept : m_key(std::exchange(other.m_key, nullptr)) {}

RegistryKey::~RegistryKey()
{
    if (m_key != nullptr)
        ::RegCloseKey(m_key);
}

std::optional<std::wstring> RegistryKey::ReadText(const wchar_t* name, DWORD maxLength) const
{
    std::wstring text(maxLength, L'\0');
    DWORD type = REG_NONE;
    DWORD sizeBytes = maxLength * sizeof(wchar_t);
    const LSTATUS status =
        ::RegQueryValueExW(m_key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &sizeBytes);
    if (status != ERROR_SUCCESS || type != REG_SZ || sizeBytes == 0)
        return std::nullopt;
    text.resize(std::min<std::size_t>(text.size(), sizeBytes / sizeof(wchar_t)));
    text.resize(std::min(text.size(), text.find(L'\0'))); // others may have written it with a terminator
    return text;
}

bool RegistryKey::WriteText(const wchar_t* name, std::wstring_view text) const
{
    const std::size_t sizeBytes = text.size() * sizeof(wchar_t);
    if (sizeBytes > std::numeric_limits<DWORD>::max())
        return false;
    // The system stores a terminator it finds behind the text, counted or not: here is none to be found.
    const std::wstring guarded = std::wstring(text) + L'.';
    const auto* data = reinterpret_cast<const BYTE*>(guarded.data());
    return ::RegSetValueExW(m_key, name, 0, REG_SZ, data, static_cast<DWORD>(sizeBytes)) == ERROR_SUCCESS;
}

bool RegistryKey::DeleteSubkey(const wchar_t* name) const
{
    return ::RegDeleteKeyW(m_key, name) == ERROR_SUCCESS;
}

} // namespace vxds
