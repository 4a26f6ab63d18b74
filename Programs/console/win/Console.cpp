#include "console/Console.h"

#include "VxBase/VxString.h"

#include <windows.h>

#include <shellapi.h>

#include <cstdio>

#include <fcntl.h>
#include <io.h>

namespace console {
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
    ::_setmode(::_fileno(stream), _O_BINARY);
    std::fwrite(utf8.data(), 1, utf8.size(), stream);
    std::fflush(stream);
}

} // namespace

std::vector<std::string> Arguments(int, const char* const*)
{
    int count = 0;
    LPWSTR* const texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; texts != nullptr && i < count; ++i)
        arguments.push_back(VxUtf8FromWide(texts[i]));
    ::LocalFree(texts);
    return arguments;
}

void PrintOutput(std::string_view utf8)
{
    Print(STD_OUTPUT_HANDLE, stdout, utf8);
}

void PrintError(std::string_view utf8)
{
    Print(STD_ERROR_HANDLE, stderr, utf8);
}

} // namespace console
