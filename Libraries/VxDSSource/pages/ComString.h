#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>

namespace pages {

/// A text on its way through IVxDSSource, freed with its scope.
///
/// Owner:  a page or its refresh thread, by value.
/// Thread: one at a time.
class ComString final {
public:
    ComString() = default;
    /// Throws std::bad_alloc.
    explicit ComString(const std::wstring& text);
    ~ComString() { ::SysFreeString(m_text); }
    ComString(const ComString&) = delete;
    ComString& operator=(const ComString&) = delete;

    /// As an argument; borrowed.
    [[nodiscard]] BSTR Get() const { return m_text; }
    /// Where a method puts a new text; what was held is freed.
    [[nodiscard]] BSTR* Put();

    /// @return  empty, too, when no text was put
    [[nodiscard]] std::wstring Text() const;

private:
    BSTR m_text = nullptr;
};

} // namespace pages
