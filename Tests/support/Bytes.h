#pragma once

#include "VxBase/VxExpected.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <random>
#include <span>
#include <string_view>
#include <vector>

/// Bytes written by hand in tests.

namespace bytes {

using Vector = std::vector<std::byte>;

/// @param digits  hexadecimal digits in pairs; blanks, line ends and '|' between them count for nothing
/// @return  the bytes; ends the program when there is anything else, because then the test itself is wrong
inline Vector FromHex(std::string_view digits)
{
    Vector result;
    int high = -1;
    for (const char c : digits) {
        if (c == ' ' || c == '\n' || c == '|')
            continue;
        const int nibble = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
        if (nibble < 0)
            std::abort();
        if (high < 0) {
            high = nibble;
        } else {
            result.push_back(static_cast<std::byte>(high * 16 + nibble)); // two nibbles fit
            high = -1;
        }
    }
    if (high >= 0)
        std::abort();
    return result;
}

inline Vector Copy(std::span<const std::byte> bytes)
{
    return {bytes.begin(), bytes.end()};
}

inline std::span<const std::byte> First(std::span<const std::byte> bytes, std::size_t size)
{
    return bytes.first(size);
}

inline Vector Join(std::span<const std::byte> a, std::span<const std::byte> b)
{
    Vector joined = Copy(a);
    joined.insert(joined.end(), b.begin(), b.end());
    return joined;
}

/// Ok when there is a value.
template <typename T>
VxError ErrorOf(const VxExpected<T>& expected)
{
    return expected.Result().Code();
}

/// Chance that is the same in every run.
class Random {
public:
    template <typename T>
    T Number()
    {
        return static_cast<T>(m_engine()); // the low bits, as many as fit
    }

    Vector Bytes(std::size_t size)
    {
        Vector result(size);
        for (std::byte& byte : result)
            byte = Number<std::byte>();
        return result;
    }

    /// @return  0 to limit
    std::size_t UpTo(std::size_t limit) { return static_cast<std::size_t>(m_engine() % (limit + 1)); }

private:
    std::mt19937_64 m_engine{20231};
};

} // namespace bytes
