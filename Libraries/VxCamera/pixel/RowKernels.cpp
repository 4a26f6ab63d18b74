#include "VxCamera/pixel/RowKernels.h"

#include <array>
#include <cstring>

namespace pixel {

bool IsAvailable(InstructionSet set)
{
    __builtin_cpu_init();
    switch (set) {
    case InstructionSet::Scalar:
        return true;
    case InstructionSet::Sse41:
        return __builtin_cpu_supports("sse4.1") != 0;
    case InstructionSet::Avx2:
        return __builtin_cpu_supports("avx2") != 0;
    case InstructionSet::Avx512Vbmi:
        return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vbmi") != 0;
    }
    return false;
}

InstructionSet BestInstructionSet()
{
    for (const auto set : {InstructionSet::Avx512Vbmi, InstructionSet::Avx2, InstructionSet::Sse41})
        if (IsAvailable(set))
            return set;
    return InstructionSet::Scalar;
}

void CopyRow(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination)
{
    std::memcpy(destination.data(), source.data(), destination.size());
}

const RowKernels& KernelsOf(InstructionSet set)
{
    using Table = const RowKernels& (*)();
    static constexpr std::array<Table, kInstructionSetCount> kTables{ScalarKernels, Sse41Kernels, Avx2Kernels,
                                                                     Avx512Kernels};
    return kTables[static_cast<std::size_t>(set)]();
}

} // namespace pixel
