#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

/// Functions that take bytes that nobody checked. A fuzzer makes up the bytes; a test replays those that are
/// kept.
namespace fuzz {

using Bytes = std::span<const std::byte>;

struct Target {
    const char* name = ""; ///< also that of the folders with its inputs
    void (*run)(Bytes) = nullptr;
};

/// All targets of this program, in no order.
inline std::vector<Target>& Targets()
{
    static std::vector<Target> targets;
    return targets;
}

/// Makes a function a target; a constant of its file.
class Registration {
public:
    Registration(const char* name, void (*run)(Bytes)) { Targets().push_back({name, run}); }
};

/// What must hold whatever the input was.
inline void Require(bool holds, const char* what)
{
    if (!holds)
        throw std::logic_error(what);
}

[[nodiscard]] inline std::string_view TextOf(Bytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Takes an input apart for targets that need several values.
///
/// Owner:  a target, for one input.
/// Thread: one.
class Input {
public:
    explicit Input(Bytes bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool IsEmpty() const { return m_bytes.empty(); }

    /// @return  the next byte; 0 when there is none
    unsigned Byte()
    {
        const Bytes one = Take(1);
        return one.empty() ? 0 : std::to_integer<unsigned>(one[0]);
    }
    unsigned Word()
    {
        const unsigned high = Byte();
        return high << 8 | Byte();
    }
    /// @return  at most so many bytes
    Bytes Take(std::size_t count)
    {
        const Bytes taken = m_bytes.first(count < m_bytes.size() ? count : m_bytes.size());
        m_bytes = m_bytes.subspan(taken.size());
        return taken;
    }
    [[nodiscard]] Bytes Rest() const { return m_bytes; }

private:
    Bytes m_bytes;
};

} // namespace fuzz
