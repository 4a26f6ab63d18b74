#include "vxgrab/ComFailure.h"

#include "VxBase/VxString.h"

#include <dshow.h>
#include <vfwmsgs.h>

#include <array>
#include <cstdint>
#include <cstdio>

namespace vxgrab {
namespace {

struct KnownCode {
    HRESULT code;
    const char* name;
    const char* meaning;
    const char* remedy; // empty where none is known
};

// A bad EXE format is no HRESULT by itself: the loader's code 193 in the Win32 facility.
constexpr auto kBadExeFormat = static_cast<HRESULT>(0x800700C1);
constexpr auto kModuleNotFound = static_cast<HRESULT>(0x8007007E);

constexpr std::array kKnownCodes{
    KnownCode{E_FAIL, "E_FAIL", "the other side refused without giving a reason", ""},
    KnownCode{E_NOINTERFACE, "E_NOINTERFACE", "the object does not offer this interface", ""},
    KnownCode{E_OUTOFMEMORY, "E_OUTOFMEMORY", "the system has no memory left", "Close other programs."},
    KnownCode{E_INVALIDARG, "E_INVALIDARG", "the value is not one that can be set", ""},
    KnownCode{E_UNEXPECTED, "E_UNEXPECTED", "this is not there at the moment",
              "The camera's features need a connected camera: check --device-id and --role."},
    KnownCode{E_ACCESSDENIED, "E_ACCESSDENIED", "access is denied", "Check the rights of this user."},
    KnownCode{REGDB_E_CLASSNOTREG, "REGDB_E_CLASSNOTREG", "the class is not registered",
              "Run 'regsvr32 VxDSSource.dll' as administrator, or name the file with --dll."},
    KnownCode{CLASS_E_CLASSNOTAVAILABLE, "CLASS_E_CLASSNOTAVAILABLE", "the module does not have this class",
              "Name VxDSSource.dll, not another module."},
    KnownCode{kBadExeFormat, "ERROR_BAD_EXE_FORMAT", "the file is not a 64-bit module",
              "Use the 64-bit VxDSSource.dll."},
    KnownCode{kModuleNotFound, "ERROR_MOD_NOT_FOUND", "the module was not found", "Check the path."},
    KnownCode{VFW_E_CANNOT_CONNECT, "VFW_E_CANNOT_CONNECT", "no way was found to connect the filters",
              "Try another --subtype."},
    KnownCode{VFW_E_CANNOT_RENDER, "VFW_E_CANNOT_RENDER", "no filter takes this stream",
              "Try another --subtype."},
    KnownCode{VFW_E_NO_ACCEPTABLE_TYPES, "VFW_E_NO_ACCEPTABLE_TYPES",
              "the two filters found no common format", "Try another --subtype, or --pixel-type."},
    KnownCode{VFW_E_TYPE_NOT_ACCEPTED, "VFW_E_TYPE_NOT_ACCEPTED", "the format was refused",
              "Try another --subtype, or --pixel-type."},
    KnownCode{VFW_E_NOT_CONNECTED, "VFW_E_NOT_CONNECTED", "the pins are not connected", ""},
    KnownCode{VFW_E_NOT_FOUND, "VFW_E_NOT_FOUND", "it was not found", ""},
    KnownCode{VFW_E_NO_ALLOCATOR, "VFW_E_NO_ALLOCATOR", "the filters found no common buffers", ""},
    KnownCode{VFW_E_NOT_STOPPED, "VFW_E_NOT_STOPPED", "the graph is running", ""},
    KnownCode{VFW_E_TIMEOUT, "VFW_E_TIMEOUT", "the time given was not enough", ""},
};

std::string SystemMeaning(HRESULT code)
{
    constexpr DWORD kCapacity = 512; // chosen: longer than any system message of one line
    std::array<wchar_t, kCapacity> text{};
    const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                          static_cast<DWORD>(code), 0, text.data(), kCapacity, nullptr);
    std::wstring_view message(text.data(), length);
    while (!message.empty() && (message.back() == L'\n' || message.back() == L'\r' || message.back() == L'.'))
        message.remove_suffix(1);
    return VxUtf8FromWide(message);
}

std::string Number(HRESULT code)
{
    std::array<char, sizeof("0x80000000")> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(code));
    return text.data();
}

} // namespace

std::string DescribeCode(HRESULT code)
{
    for (const KnownCode& known : kKnownCodes) {
        if (known.code != code)
            continue;
        std::string text = std::string(known.name) + " (" + Number(code) + "): " + known.meaning + ".";
        return *known.remedy != '\0' ? text + " " + known.remedy : text;
    }
    const std::string meaning = SystemMeaning(code);
    return meaning.empty() ? Number(code) : Number(code) + ": " + meaning + ".";
}

VxResult ComFailure(std::string_view attempt, HRESULT code)
{
    return VxResult(VxError::Failed, "cannot " + std::string(attempt) + ": " + DescribeCode(code));
}

} // namespace vxgrab
