#include "VxCamera/genapi/node/BitField.h"

#include <algorithm>

namespace genapi {

namespace {

constexpr unsigned kWordBits = 64;
constexpr unsigned kBitsPerByte = 8;

} // namespace

BitField BitField::FromBitNumbers(unsigned lsb, unsigned msb, unsigned registerBits, ByteOrder order)
{
    unsigned low = std::min(lsb, msb);
    unsigned high = std::max(lsb, msb);
    if (order == ByteOrder::BigEndian) {
        const unsigned swapped = registerBits - 1 - high;
        high = registerBits - 1 - low;
        low = swapped;
    }
    return {.firstBit = low, .bitCount = high - low + 1};
}

std::uint64_t BitField::Mask() const
{
    return bitCount >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << bitCount) - 1;
}

std::int64_t BitField::Extract(std::uint64_t registerValue) const
{
    std::uint64_t field = (registerValue >> firstBit) & Mask();
    const bool isNegative = signedness == Signedness::Signed && ((field >> (bitCount - 1)) & 1) != 0;
    if (isNegative)
        field |= ~Mask();
    return static_cast<std::int64_t>(field);
}

std::uint64_t BitField::Insert(std::uint64_t registerValue, std::int64_t value) const
{
    const std::uint64_t mask = Mask() << firstBit;
    return (registerValue & ~mask) | ((static_cast<std::uint64_t>(value) << firstBit) & mask);
}

std::int64_t BitField::Minimum() const
{
    if (signedness == Signedness::Unsigned)
        return 0;
    return bitCount >= kWordBits ? INT64_MIN : -(std::int64_t{1} << (bitCount - 1));
}

std::int64_t BitField::Maximum() const
{
    const unsigned valueBits = signedness == Signedness::Signed ? bitCount - 1 : bitCount;
    return valueBits >= kWordBits - 1 ? INT64_MAX : (std::int64_t{1} << valueBits) - 1;
}

std::uint64_t LoadWord(std::span<const std::byte> bytes, ByteOrder order)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::size_t next = order == ByteOrder::BigEndian ? i : bytes.size() - 1 - i;
        value = (value << kBitsPerByte) | std::to_integer<std::uint64_t>(bytes[next]);
    }
    return value;
}

void StoreWord(std::span<std::byte> bytes, std::uint64_t value, ByteOrder order)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::size_t next = order == ByteOrder::LittleEndian ? i : bytes.size() - 1 - i;
        bytes[next] = static_cast<std::byte>(value & 0xFFu);
        value >>= kBitsPerByte;
    }
}

} // namespace genapi
