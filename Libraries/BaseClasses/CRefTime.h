#pragma once

#include <windows.h>

#include <strmif.h>

inline constexpr LONGLONG MILLISECONDS = 1000;           // per second
inline constexpr LONGLONG UNITS = 10000000;              // 100 ns units per second
inline constexpr LONGLONG MAX_TIME = 0x7FFFFFFFFFFFFFFF; // "no end"

/// A time in 100 ns units. An argument of 32 bits means milliseconds, one of 64 bits means units.
///
/// Owner:  anybody, by value.
/// Thread: like an integer.
class CRefTime {
public:
    REFERENCE_TIME m_time = 0;

    CRefTime() = default;
    CRefTime(LONG milliseconds)
        : m_time(MillisecondsToUnits(milliseconds)) {} // NOLINT(google-explicit-constructor)
    CRefTime(int milliseconds)
        : m_time(MillisecondsToUnits(milliseconds)) {} // NOLINT(google-explicit-constructor)
    CRefTime(REFERENCE_TIME units) : m_time(units) {}  // NOLINT(google-explicit-constructor)

    operator REFERENCE_TIME() const { return m_time; } // NOLINT(google-explicit-constructor)

    CRefTime& operator=(LONGLONG units)
    {
        m_time = units;
        return *this;
    }
    CRefTime& operator+=(const CRefTime& other)
    {
        m_time += other.m_time;
        return *this;
    }
    CRefTime& operator-=(const CRefTime& other)
    {
        m_time -= other.m_time;
        return *this;
    }

    /// Whole milliseconds, cut towards zero.
    LONG Millisecs() const { return static_cast<LONG>(m_time / (UNITS / MILLISECONDS)); }
    LONGLONG GetUnits() const { return m_time; }

private:
    static constexpr REFERENCE_TIME MillisecondsToUnits(LONGLONG milliseconds)
    {
        return milliseconds * (UNITS / MILLISECONDS);
    }
};
