#include "VxCamera/genapi/xml/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace genapi {

namespace {

// Fixed by UTF-8: what the first byte of a sequence says about it. The first code point is the smallest that
// needs the sequence's length.
struct Lead {
    unsigned mask;
    unsigned mark;
    std::size_t continuationBytes;
    std::uint32_t firstCodePoint;
};
constexpr Lead kLeads[] = {{0xE0, 0xC0, 1, 0x80}, {0xF0, 0xE0, 2, 0x800}, {0xF8, 0xF0, 3, 0x10000}};

constexpr unsigned kContinuationMask = 0xC0;
constexpr unsigned kContinuationMark = 0x80;
constexpr unsigned kContinuationBits = 6;
constexpr std::uint32_t kFirstSurrogate = 0xD800;
constexpr std::uint32_t kLastSurrogate = 0xDFFF;
constexpr std::uint32_t kLastCodePoint = 0x10FFFF;

unsigned ByteAt(std::string_view bytes, std::size_t position)
{
    return static_cast<unsigned char>(bytes[position]);
}

/// @return  length of the sequence of several bytes at `position`; 0 when it is none
std::size_t SequenceLength(std::string_view bytes, std::size_t position)
{
    const unsigned first = ByteAt(bytes, position);
    for (const Lead& lead : kLeads) {
        if ((first & lead.mask) != lead.mark)
            continue;
        if (position + lead.continuationBytes >= bytes.size())
            return 0;
        std::uint32_t codePoint = first & ~lead.mask;
        for (std::size_t i = 1; i <= lead.continuationBytes; ++i) {
            const unsigned byte = ByteAt(bytes, position + i);
            if ((byte & kContinuationMask) != kContinuationMark)
                return 0;
            codePoint = (codePoint << kContinuationBits) | (byte & ~kContinuationMask);
        }
        const bool isSurrogate = codePoint >= kFirstSurrogate && codePoint <= kLastSurrogate;
        const bool isGood = codePoint >= lead.firstCodePoint && codePoint <= kLastCodePoint && !isSurrogate;
        return isGood ? lead.continuationBytes + 1 : 0;
    }
    return 0;
}

constexpr unsigned kFirstNonAscii = 0x80;

} // namespace

bool IsUtf8(std::string_view bytes)
{
    for (std::size_t position = 0; position < bytes.size();) {
        if (ByteAt(bytes, position) < kFirstNonAscii) {
            ++position;
            continue;
        }
        const std::size_t length = SequenceLength(bytes, position);
        if (length == 0)
            return false;
        position += length;
    }
    return true;
}

std::string Utf8FromLatin1(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t position = 0; position < bytes.size(); ++position) {
        const unsigned byte = ByteAt(bytes, position);
        if (byte < kFirstNonAscii) {
            text.push_back(static_cast<char>(byte));
        } else {
            text.push_back(static_cast<char>(kLeads[0].mark | (byte >> kContinuationBits)));
            text.push_back(static_cast<char>(kContinuationMark | (byte & ~kContinuationMask)));
        }
    }
    return text;
}

std::string Utf8FromCamera(std::string_view bytes)
{
    return IsUtf8(bytes) ? std::string(bytes) : Utf8FromLatin1(bytes);
}

} // namespace genapi
