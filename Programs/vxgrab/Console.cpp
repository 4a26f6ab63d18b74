#include "vxgrab/Console.h"

#include "VxBase/VxString.h"

#include <windows.h>

#include <cstdio>

#include <fcntl.h>
#include <io.h>

namespace vxgrab {
namespace {

bool IsConsole(HANDLE handle)
{
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode) != FALSE;
}

void Print(DWORD standardHandle, std::FILE* stream, std::string_view utf8)
{
    const HANDLE handle = ::GetStdHandle(standardHandle);
    if (IsConsole(handle)) {
        const std::wstring wide = VxWideFromUtf8(utf8);
        DWORD written = 0;
        ::WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
        return;
    }
    // Bytes as they are: scripts on every system read lines that end with one character.
    ::_setmode(::_fileno(stream), _O_BINARY);
    std::fwrite(utf8.data(), 1, utf8.size(), stream);
    std::fflush(stream);
}

} // namespace

void PrintOutput(std::string_view utf8)
{
    Print(STD_OUTPUT_HANDLE, stdout, utf8);
}

void PrintError(std::string_view utf8)
{
    Print(STD_ERROR_HANDLE, stderr, utf8);
}

bool IsErrorConsole()
{
    return IsConsole(::GetStdHandle(STD_ERROR_HANDLE));
}

} // namespace vxgrab
