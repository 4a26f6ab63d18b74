#pragma once

#include <wtypes.h>

#include <oleauto.h>

#include <string>
#include <string_view>

namespace vxgrab {

/// A BSTR for one scope: an argument made from UTF-8 text, or the place for one that a method returns.
///
/// Owner:  the calling function, by value.
/// Thread: like std::string.
class ComText final {
public:
    ComText() = default;
    explicit ComText(std::string_view utf8);
    ~ComText();
    ComText(const ComText&) = delete;
    ComText& operator=(const ComText&) = delete;

    [[nodiscard]] BSTR Get() const { return m_text; }

    /// Place for a method that returns a text; what was held is freed.
    [[nodiscard]] BSTR* Put();

    /// @return  the text in UTF-8; empty when there is none
    [[nodiscard]] std::string Utf8() const;

private:
    BSTR m_text = nullptr;
};

} // namespace vxgrab
