#include "VxCamera/genapi/node/FloatRegNode.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace genapi {

namespace {

// Fixed by IEEE 754.
constexpr std::size_t kSingleBytes = 4;
constexpr std::size_t kDoubleBytes = 8;

} // namespace

bool FloatRegNode::IsSinglePrecision() const
{
    return FixedLength() == kSingleBytes;
}

void FloatRegNode::Finish()
{
    RegisterNode::Finish();
    const auto length = FixedLength();
    if (length && *length != kSingleBytes && *length != kDoubleBytes)
        SetFault(WrongLength(*length).GetDescription().Narrow());
}

VxResult FloatRegNode::WrongLength(std::size_t length) const
{
    return VxResult(VxError::InvalidData, "a float has 4 or 8 bytes, not " + std::to_string(length));
}

VxExpected<double> FloatRegNode::DoGetFloat()
{
    const auto bytes = Load();
    if (!bytes)
        return bytes.Error();
    const std::uint64_t word = bytes->size() <= kDoubleBytes ? LoadWord(*bytes, Order(bytes->size())) : 0;
    if (bytes->size() == kSingleBytes)
        return static_cast<double>(
            std::bit_cast<float>(static_cast<std::uint32_t>(word))); // 4 bytes were read
    if (bytes->size() == kDoubleBytes)
        return std::bit_cast<double>(word);
    return Error(VxError::InvalidData, WrongLength(bytes->size()).GetDescription().Narrow());
}

VxResult FloatRegNode::DoSetFloat(double value)
{
    const auto length = Length();
    if (!length)
        return length.Error();
    std::array<std::byte, kDoubleBytes> bytes{};
    if (*length != kSingleBytes && *length != kDoubleBytes)
        return Error(VxError::InvalidData, WrongLength(*length).GetDescription().Narrow());
    const auto used = std::span(bytes).first(*length);
    const std::uint64_t word = *length == kSingleBytes
                                   ? std::bit_cast<std::uint32_t>(static_cast<float>(value))
                                   : std::bit_cast<std::uint64_t>(value);
    StoreWord(used, word, Order(*length));
    return Store(used);
}

VxExpected<FloatLimits> FloatRegNode::DoGetFloatLimits()
{
    const auto length = Length();
    if (!length)
        return length.Error();
    const double largest = *length == kSingleBytes ? static_cast<double>(std::numeric_limits<float>::max())
                                                   : std::numeric_limits<double>::max();
    return FloatLimits{.minimum = -largest, .maximum = largest, .increment = 0};
}

} // namespace genapi
