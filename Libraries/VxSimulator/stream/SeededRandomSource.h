#pragma once

#include "VxSimulator/stream/IRandomSource.h"

#include <cstdint>
#include <random>

namespace simulator {

/// Numbers that are the same for the same seed, on every system.
///
/// Owner:  anybody.
/// Thread: one at a time.
class SeededRandomSource final : public IRandomSource {
public:
    explicit SeededRandomSource(std::uint64_t seed) : m_engine(seed) {}

    double Next() override;

private:
    std::mt19937_64 m_engine;
};

} // namespace simulator
