#include "BaseClasses/StreamIntegers.h"

#include <vfwmsgs.h>

#include <array>
#include <cstdint>

namespace {

constexpr std::size_t kUnits = kStreamIntegerBytes / sizeof(WCHAR);
constexpr std::uint32_t kDecimal = 10;

bool IsSeparator(WCHAR unit)
{
    return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n' || unit == L'\0';
}

HRESULT ReadUnit(IStream* stream, WCHAR& unit)
{
    ULONG bytes = 0;
    const HRESULT hr = stream->Read(&unit, sizeof(unit), &bytes);
    if (FAILED(hr))
        return hr;
    return bytes == sizeof(unit) ? S_OK : VFW_E_INVALID_FILE_FORMAT;
}

} // namespace

STDAPI WriteInt(IStream* stream, int number)
{
    std::array<WCHAR, kUnits> text;
    text.fill(L'0');
    text.back() = L' ';

    const bool isNegative = number < 0;
    auto rest = static_cast<std::uint32_t>(number);
    if (isNegative) {
        text.front() = L'-';
        rest = 0U - rest; // also right for the smallest number
    }
    for (auto place = text.rbegin() + 1; rest != 0; ++place, rest /= kDecimal)
        *place = static_cast<WCHAR>(L'0' + rest % kDecimal); // ten digits at most: the sign keeps its place

    return stream->Write(text.data(), kStreamIntegerBytes, nullptr);
}

int WINAPI ReadInt(IStream* stream, HRESULT& hr)
{
    bool isNegative = false;
    bool isFirst = true;
    std::uint32_t number = 0; // wraps round on too many digits

    for (;; isFirst = false) {
        WCHAR unit = L'\0';
        hr = ReadUnit(stream, unit);
        if (FAILED(hr))
            return 0;
        if (isFirst && unit == L'-') {
            isNegative = true;
        } else if (unit >= L'0' && unit <= L'9') {
            number = number * kDecimal + static_cast<std::uint32_t>(unit - L'0');
        } else if (IsSeparator(unit)) {
            break;
        } else {
            hr = VFW_E_INVALID_FILE_FORMAT;
            return 0;
        }
    }
    return static_cast<int>(isNegative ? 0U - number : number);
}
