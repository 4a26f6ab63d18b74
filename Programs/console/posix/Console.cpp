#include "console/Console.h"

#include <cstdio>

namespace console {
namespace {

void Print(std::FILE* stream, std::string_view utf8)
{
    std::fwrite(utf8.data(), 1, utf8.size(), stream);
    std::fflush(stream);
}

} // namespace

std::vector<std::string> Arguments(int argc, const char* const* argv)
{
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

void PrintOutput(std::string_view utf8)
{
    Print(stdout, utf8);
}

void PrintError(std::string_view utf8)
{
    Print(stderr, utf8);
}

} // namespace console
