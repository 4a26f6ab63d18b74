#include "VxSimulator/stream/SeededRandomSource.h"

namespace simulator {

double SeededRandomSource::Next()
{
    // The standard fixes the engine's numbers but not those of its distributions: 53 bits fill a double.
    constexpr unsigned kUnusedBits = 11;
    constexpr double kRange = 9007199254740992.0; // 2^53
    return static_cast<double>(m_engine() >> kUnusedBits) / kRange;
}

} // namespace simulator
