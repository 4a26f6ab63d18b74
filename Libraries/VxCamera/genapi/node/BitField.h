#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace genapi {

enum class ByteOrder : std::uint8_t { LittleEndian, BigEndian };

enum class Signedness : std::uint8_t { Unsigned, Signed };

/// Where an integer lies in the bytes of its register, and back and forth between the two.
///
/// Bits are counted here from the least significant one of the register's number.
struct BitField {
    unsigned firstBit = 0;
    unsigned bitCount = 0; ///< 1 to 64
    Signedness signedness = Signedness::Unsigned;

    /// A field given by the numbers of its outer bits as a description counts them: from the least
    /// significant bit of a little-endian register, from the most significant one of a big-endian register.
    /// Their order does not matter.
    /// @param registerBits  more than either bit's number
    [[nodiscard]] static BitField FromBitNumbers(unsigned lsb, unsigned msb, unsigned registerBits,
                                                 ByteOrder order);

    [[nodiscard]] std::int64_t Extract(std::uint64_t registerValue) const;

    /// @return  the register's number with the field replaced by the low bits of `value`
    [[nodiscard]] std::uint64_t Insert(std::uint64_t registerValue, std::int64_t value) const;

    /// Smallest and largest value; those of 64 bits without sign are limited to what a signed integer holds.
    [[nodiscard]] std::int64_t Minimum() const;
    [[nodiscard]] std::int64_t Maximum() const;

private:
    [[nodiscard]] std::uint64_t Mask() const;
};

/// @param bytes  up to 8
[[nodiscard]] std::uint64_t LoadWord(std::span<const std::byte> bytes, ByteOrder order);
void StoreWord(std::span<std::byte> bytes, std::uint64_t value, ByteOrder order);

} // namespace genapi
