#include "VxCamera/wire/gvcp/ReadReg.h"

#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

namespace gvcp {

namespace {

constexpr std::size_t kWordBytes = 4; // fixed by the protocol: an address, a value

//   offset  bytes  field        (big endian; the same for addresses and values)
//      4 i      4  word i
VxExpected<std::vector<std::uint32_t>> ParseWords(std::span<const std::byte> payload, const char* what)
{
    if (payload.size() < kWordBytes)
        return VxResult(VxError::Truncated, what);
    if (payload.size() % kWordBytes != 0 || payload.size() > kMaxPayloadBytes)
        return VxResult(VxError::InvalidData, what);

    VxByteReader in(payload);
    std::vector<std::uint32_t> words(payload.size() / kWordBytes);
    for (std::uint32_t& word : words)
        word = in.U32be();
    return words;
}

bool IsCountGood(std::span<const std::uint32_t> words)
{
    return !words.empty() && words.size() <= kMaxReadRegisters;
}

// At most kMaxPayloadBytes, so it fits.
std::uint16_t PayloadBytes(std::span<const std::uint32_t> words)
{
    return static_cast<std::uint16_t>(words.size() * kWordBytes);
}

void WriteWords(VxByteWriter& out, std::span<const std::uint32_t> words)
{
    for (const std::uint32_t word : words)
        out.U32be(word);
}

} // namespace

VxExpected<ReadRegCommand> ParseReadRegCommand(std::span<const std::byte> payload)
{
    auto words = ParseWords(payload, "addresses of a register read");
    if (!words)
        return words.Error();
    return ReadRegCommand{*std::move(words)};
}

VxExpected<Datagram> MakeReadRegCommand(std::uint16_t requestId, std::span<const std::uint32_t> addresses)
{
    if (!IsCountGood(addresses))
        return VxResult(VxError::InvalidParameter, "number of registers to read");

    Datagram datagram;
    auto out = datagram.Open();
    WriteCommandHeader(
        out, {.command = Command::ReadReg, .payloadBytes = PayloadBytes(addresses), .requestId = requestId});
    WriteWords(out, addresses);
    datagram.Close(out);
    return datagram;
}

VxExpected<ReadRegAck> ParseReadRegAck(std::span<const std::byte> payload)
{
    auto words = ParseWords(payload, "values of a register read");
    if (!words)
        return words.Error();
    return ReadRegAck{*std::move(words)};
}

VxExpected<Datagram> MakeReadRegAck(std::uint16_t ackId, std::span<const std::uint32_t> values)
{
    if (!IsCountGood(values))
        return VxResult(VxError::InvalidParameter, "number of register values");

    Datagram datagram;
    auto out = datagram.Open();
    WriteAckHeader(out, {.ack = Ack::ReadReg, .payloadBytes = PayloadBytes(values), .ackId = ackId});
    WriteWords(out, values);
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
