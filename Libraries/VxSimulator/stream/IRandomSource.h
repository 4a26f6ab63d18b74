#pragma once

namespace simulator {

/// Chance.
///
/// Owner:  the composition root, or a test.
/// Thread: one at a time.
class IRandomSource {
public:
    IRandomSource() = default;
    IRandomSource(const IRandomSource&) = delete;
    IRandomSource& operator=(const IRandomSource&) = delete;
    virtual ~IRandomSource() = default;

    /// @return  a number from 0 up to, but not including, 1; all equally likely
    virtual double Next() = 0;
};

} // namespace simulator
