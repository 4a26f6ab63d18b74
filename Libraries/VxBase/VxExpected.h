#pragma once

#include "VxBase/VxResult.h"

#include <cassert>
#include <utility>
#include <variant>

/// A value, or the result that says why there is none.
///
/// Owner:  anybody, by value.
/// Thread: like the value.
template <typename T>
class [[nodiscard]] VxExpected {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): a value is a result
    VxExpected(T value) : m_content(std::in_place_index<0>, std::move(value)) {}

    /// @param failure  must not be OK
    VxExpected(VxResult failure) : m_content(std::in_place_index<1>, std::move(failure)) // NOLINT
    {
        assert(!std::get<1>(m_content).IsOK());
    }
    VxExpected(VxError failure) : VxExpected(VxResult(failure)) {} // NOLINT(google-explicit-constructor)

    [[nodiscard]] bool HasValue() const { return m_content.index() == 0; }
    explicit operator bool() const { return HasValue(); }

    [[nodiscard]] T& operator*() & { return std::get<0>(m_content); }
    [[nodiscard]] const T& operator*() const& { return std::get<0>(m_content); }
    [[nodiscard]] T&& operator*() && { return std::get<0>(std::move(m_content)); }
    [[nodiscard]] T* operator->() { return &std::get<0>(m_content); }
    [[nodiscard]] const T* operator->() const { return &std::get<0>(m_content); }
    [[nodiscard]] T ValueOr(T fallback) const
    {
        return HasValue() ? std::get<0>(m_content) : std::move(fallback);
    }

    /// Only when there is no value.
    [[nodiscard]] const VxResult& Error() const { return std::get<1>(m_content); }

    /// OK when there is a value, else the failure.
    [[nodiscard]] VxResult Result() const { return HasValue() ? VxResult::Ok() : Error(); }

private:
    std::variant<T, VxResult> m_content;
};
