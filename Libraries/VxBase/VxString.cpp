#include "VxBase/VxString.h"

#include <cstdint>

namespace {

// Fixed by Unicode.
constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr char32_t kHighSurrogates = 0xD800;
constexpr char32_t kLowSurrogates = 0xDC00;
constexpr char32_t kAfterSurrogates = 0xE000;
constexpr unsigned kSurrogateBits = 10;
constexpr char32_t kSurrogateMask = 0x3FF;

constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

struct LeadByte {
    std::size_t continuationBytes;
    char32_t bits;
    char32_t smallest; // below it the form is overlong
};

LeadByte ReadLeadByte(unsigned char byte)
{
    if ((byte & 0xE0u) == 0xC0u)
        return {1, byte & 0x1Fu, 0x80};
    if ((byte & 0xF0u) == 0xE0u)
        return {2, byte & 0x0Fu, 0x800};
    if ((byte & 0xF8u) == 0xF0u)
        return {3, byte & 0x07u, kFirstSupplementary};
    return {0, kReplacement, 0};
}

/// Reads one code point and moves `position` behind it; a broken sequence gives U+FFFD and moves by one byte.
char32_t NextCodePoint(std::string_view text, std::size_t& position)
{
    const auto first = static_cast<unsigned char>(text[position++]);
    if (first < 0x80)
        return first;
    const LeadByte lead = ReadLeadByte(first);
    if (lead.continuationBytes == 0 || position + lead.continuationBytes > text.size())
        return kReplacement;
    char32_t codePoint = lead.bits;
    for (std::size_t i = 0; i < lead.continuationBytes; ++i) {
        const auto byte = static_cast<unsigned char>(text[position + i]);
        if ((byte & 0xC0u) != 0x80u)
            return kReplacement;
        codePoint = (codePoint << 6) | (byte & 0x3Fu);
    }
    const bool isSurrogate = codePoint >= kHighSurrogates && codePoint < kAfterSurrogates;
    if (codePoint < lead.smallest || codePoint > kLastCodePoint || isSurrogate)
        return kReplacement;
    position += lead.continuationBytes;
    return codePoint;
}

void AppendWide(std::wstring& wide, char32_t codePoint)
{
    if (kWideIsUtf16 && codePoint >= kFirstSupplementary) {
        const char32_t offset = codePoint - kFirstSupplementary;
        wide.push_back(static_cast<wchar_t>(kHighSurrogates + (offset >> kSurrogateBits)));
        wide.push_back(static_cast<wchar_t>(kLowSurrogates + (offset & kSurrogateMask)));
        return;
    }
    wide.push_back(static_cast<wchar_t>(codePoint));
}

void AppendUtf8(std::string& narrow, char32_t codePoint)
{
    const auto push = [&](char32_t byte) { narrow.push_back(static_cast<char>(byte)); };
    if (codePoint < 0x80) {
        push(codePoint);
    } else if (codePoint < 0x800) {
        push(0xC0 | (codePoint >> 6));
        push(0x80 | (codePoint & 0x3F));
    } else if (codePoint < kFirstSupplementary) {
        push(0xE0 | (codePoint >> 12));
        push(0x80 | ((codePoint >> 6) & 0x3F));
        push(0x80 | (codePoint & 0x3F));
    } else {
        push(0xF0 | (codePoint >> 18));
        push(0x80 | ((codePoint >> 12) & 0x3F));
        push(0x80 | ((codePoint >> 6) & 0x3F));
        push(0x80 | (codePoint & 0x3F));
    }
}

char32_t NextCodePoint(std::wstring_view text, std::size_t& position)
{
    const auto unit = static_cast<char32_t>(text[position++]);
    if (unit > kLastCodePoint)
        return kReplacement;
    if (unit < kHighSurrogates || unit >= kAfterSurrogates)
        return unit;
    if (unit >= kLowSurrogates || position >= text.size())
        return kReplacement;
    const auto low = static_cast<char32_t>(text[position]);
    if (low < kLowSurrogates || low >= kAfterSurrogates)
        return kReplacement;
    ++position;
    return kFirstSupplementary + ((unit - kHighSurrogates) << kSurrogateBits) + (low - kLowSurrogates);
}

} // namespace

std::wstring VxWideFromUtf8(std::string_view narrow)
{
    std::wstring wide;
    wide.reserve(narrow.size());
    for (std::size_t position = 0; position < narrow.size();)
        AppendWide(wide, NextCodePoint(narrow, position));
    return wide;
}

std::string VxUtf8FromWide(std::wstring_view wide)
{
    std::string narrow;
    narrow.reserve(wide.size());
    for (std::size_t position = 0; position < wide.size();)
        AppendUtf8(narrow, NextCodePoint(wide, position));
    return narrow;
}

VxString::VxString(const char* narrow) : VxString(std::string_view(narrow != nullptr ? narrow : "")) {}

VxString::VxString(const wchar_t* wide) : VxString(std::wstring_view(wide != nullptr ? wide : L"")) {}

VxString::VxString(std::string_view narrow) : m_narrow(narrow), m_wide(VxWideFromUtf8(narrow)) {}

VxString::VxString(std::wstring_view wide) : m_narrow(VxUtf8FromWide(wide)), m_wide(wide) {}
