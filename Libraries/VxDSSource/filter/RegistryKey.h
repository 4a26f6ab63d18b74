#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace vxds {

/// An open registry key.
///
/// Owner:  whoever opened it, by value; closed at the end.
/// Thread: one at a time.
class RegistryKey {
public:
    /// @param path    below HKEY_CURRENT_USER
    /// @param access  KEY_READ, KEY_ALL_ACCESS
    /// @return  a key that is not open when there is none or access is refused
    [[nodiscard]] static RegistryKey Open(const wchar_t* path, REGSAM access);

    /// Opens the key, or makes it to last, with full access.
    [[nodiscard]] static RegistryKey Create(const wchar_t* path);

    ~RegistryKey();
    RegistryKey(RegistryKey&& other) noexcept;
    RegistryKey& operator=(RegistryKey&&) = delete;

    [[nodiscard]] bool IsOpen() const { return m_key != nullptr; }

    /// @param maxLength  longest text, in characters; a longer one reads as none
    /// @return  a text value (REG_SZ) that is not empty, up to its terminator if it has one
    [[nodiscard]] std::optional<std::wstring> ReadText(const wchar_t* name, DWORD maxLength) const;

    /// Writes a text value without its terminator.
    [[nodiscard]] bool WriteText(const wchar_t* name, std::wstring_view text) const;

    /// Deletes a key below this one that has no keys of its own.
    bool DeleteSubkey(const wchar_t* name) const;

private:
    explicit RegistryKey(HKEY key) : m_key(key) {}
    HKEY m_key; // null when nothing is open
};

} // namespace vxds
