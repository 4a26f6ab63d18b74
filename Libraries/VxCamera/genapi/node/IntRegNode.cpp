#include "VxCamera/genapi/node/IntRegNode.h"

#include <array>

namespace genapi {

namespace {

constexpr std::size_t kMaxBytes = 8;
constexpr std::int64_t kBitsPerByte = 8;

} // namespace

void IntRegNode::Apply(const NodeProperty& property)
{
    switch (property.element) {
    case Element::Bit:
        m_lsb = IntegerOf(property);
        m_msb = m_lsb;
        return;
    case Element::Lsb:
        m_lsb = IntegerOf(property);
        return;
    case Element::Msb:
        m_msb = IntegerOf(property);
        return;
    case Element::Sign:
        m_signedness = property.text == "Signed" ? Signedness::Signed : Signedness::Unsigned;
        return;
    default:
        RegisterNode::Apply(property);
    }
}

void IntRegNode::Finish()
{
    RegisterNode::Finish();
    if (!FixedLength())
        return;
    if (const auto field = Field(*FixedLength()); !field)
        SetFault(field.Error().GetDescription().Narrow());
}

VxExpected<BitField> IntRegNode::Field(std::size_t length) const
{
    if (length > kMaxBytes)
        return VxResult(VxError::InvalidData,
                        "an integer of " + std::to_string(length) + " bytes is too long");
    const std::int64_t bits = static_cast<std::int64_t>(length) * kBitsPerByte;
    const std::int64_t lsb = m_lsb.value_or(0);
    const std::int64_t msb = m_msb.value_or(bits - 1);
    const auto isInside = [&](std::int64_t bit) { return bit >= 0 && bit < bits; };
    if (!isInside(lsb) || !isInside(msb))
        return VxResult(VxError::InvalidData, "its bits " + std::to_string(lsb) + " to " +
                                                  std::to_string(msb) + " are not all inside of its " +
                                                  std::to_string(bits) + " bits");
    const bool isWhole = !m_lsb && !m_msb;
    BitField field = BitField::FromBitNumbers(static_cast<unsigned>(lsb), static_cast<unsigned>(msb),
                                              static_cast<unsigned>(bits),
                                              isWhole ? ByteOrder::LittleEndian : Order(length));
    field.signedness = m_signedness;
    return field;
}

VxExpected<std::int64_t> IntRegNode::DoGetInteger()
{
    const auto bytes = Load();
    if (!bytes)
        return bytes.Error();
    const auto field = Field(bytes->size());
    if (!field)
        return Error(field.Error().Code(), field.Error().GetDescription().Narrow());
    return field->Extract(LoadWord(*bytes, Order(bytes->size())));
}

// Other bits of the register stay as the camera has them now; of a register that cannot be read they become
// 0.
VxResult IntRegNode::DoSetInteger(std::int64_t value)
{
    const auto length = Length();
    if (!length)
        return length.Error();
    const auto field = Field(*length);
    if (!field)
        return Error(field.Error().Code(), field.Error().GetDescription().Narrow());
    std::uint64_t word = 0;
    const bool isPart = field->bitCount < *length * kBitsPerByte;
    if (isPart && IsReadable(RegisterAccess())) {
        const auto bytes = Load(Freshness::FromCamera);
        if (!bytes)
            return bytes.Error();
        word = LoadWord(*bytes, Order(*length));
    }
    std::array<std::byte, kMaxBytes> bytes{};
    const auto used = std::span(bytes).first(*length);
    StoreWord(used, field->Insert(word, value), Order(*length));
    return Store(used);
}

VxExpected<IntegerLimits> IntRegNode::DoGetIntegerLimits()
{
    const auto length = Length();
    if (!length)
        return length.Error();
    const auto field = Field(*length);
    if (!field)
        return Error(field.Error().Code(), field.Error().GetDescription().Narrow());
    return IntegerLimits{.minimum = field->Minimum(), .maximum = field->Maximum(), .increment = 1};
}

} // namespace genapi
