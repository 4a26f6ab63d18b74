#include "fuzz/FuzzTarget.h"

#include <cstdint>

/// What the fuzzer calls; its program has one target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Targets().front().run(std::as_bytes(std::span(data, size)));
    return 0;
}
