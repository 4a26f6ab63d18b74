#include "console/Console.h"

#include "vxctl/CommandLine.h"
#include "vxctl/Commands.h"

#include <exception>
#include <string>

namespace {

int Main(int argc, const char* const* argv)
{
    const vxctl::CommandLineResult commandLine = vxctl::ReadCommandLine(console::Arguments(argc, argv));
    if (!commandLine.request) {
        (commandLine.exitCode == 0 ? console::PrintOutput : console::PrintError)(commandLine.text);
        return commandLine.exitCode;
    }
    const auto failure = vxctl::Run(*commandLine.request);
    if (!failure)
        return static_cast<int>(vxctl::ExitCode::Ok);
    console::PrintError("error: " + failure->sentence + "\n");
    return static_cast<int>(failure->exitCode);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Main(argc, argv);
    } catch (const std::exception& error) {
        console::PrintError(std::string("error: ") + error.what() + "\n");
        return static_cast<int>(vxctl::ExitCode::Refused);
    }
}
