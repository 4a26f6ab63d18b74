#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Text as the camera library passes it: one value, readable as wide and as narrow text.
///
/// Narrow text is UTF-8 (device texts, feature names, XML). Wide text is UTF-16 where wchar_t has 16 bits
/// (Windows) and UTF-32 elsewhere. A byte that is not valid UTF-8 becomes U+FFFD in the wide form and stays
/// as it is in the narrow form; an unpaired surrogate becomes U+FFFD in the narrow form.
///
/// Owner:  anybody, by value.
/// Thread: like std::string; reading from several threads at once is safe.
class VxString {
public:
    VxString() = default;
    VxString(const char* narrow);      // NOLINT(google-explicit-constructor): a text literal is a text
    VxString(const wchar_t* wide);     // NOLINT(google-explicit-constructor)
    VxString(std::string_view narrow); // NOLINT(google-explicit-constructor)
    VxString(std::wstring_view wide);  // NOLINT(google-explicit-constructor)
    VxString(const std::string& narrow) : VxString(std::string_view(narrow)) {} // NOLINT
    VxString(const std::wstring& wide) : VxString(std::wstring_view(wide)) {}   // NOLINT

    /// Wide text with a terminator; valid until the string is changed or destroyed.
    [[nodiscard]] const wchar_t* GetUnicode() const { return m_wide.c_str(); }

    /// UTF-8 text with a terminator; valid until the string is changed or destroyed.
    [[nodiscard]] const char* GetAscii() const { return m_narrow.c_str(); }

    /// @return  length of the wide text in wchar_t units, without the terminator
    [[nodiscard]] std::size_t GetLength() const { return m_wide.size(); }

    [[nodiscard]] bool IsEmpty() const { return m_wide.empty(); }
    [[nodiscard]] const std::string& Narrow() const { return m_narrow; }
    [[nodiscard]] const std::wstring& Wide() const { return m_wide; }

    friend bool operator==(const VxString& a, const VxString& b) { return a.m_narrow == b.m_narrow; }
    friend bool operator==(const VxString& a, const char* b) { return a.m_narrow == (b != nullptr ? b : ""); }

private:
    std::string m_narrow;
    std::wstring m_wide;
};

/// Conversions behind VxString; both replace what cannot be converted by U+FFFD and never fail.
[[nodiscard]] std::wstring VxWideFromUtf8(std::string_view narrow);
[[nodiscard]] std::string VxUtf8FromWide(std::wstring_view wide);
