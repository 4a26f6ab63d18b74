#pragma once

#include <windows.h>

#include <set>
#include <string>
#include <vector>

/// The registry at one moment: the path of each key, and each value with its data.
///
/// Owner:  a test, by value.
/// Thread: one.
class RegistrySnapshot final {
public:
    /// Reads this user's part and the machine's software part; all that a registration may touch lies there.
    [[nodiscard]] static RegistrySnapshot Take();

    [[nodiscard]] std::size_t Size() const { return m_entries.size(); }

    /// @return  what is here and not in the other one
    [[nodiscard]] std::vector<std::wstring> Beyond(const RegistrySnapshot& other) const;

private:
    void Read(HKEY parent, const std::wstring& name, const std::wstring& path);
    void ReadValues(HKEY key, const std::wstring& path);

    std::set<std::wstring> m_entries;
};
