#include "console/Console.h"

#include "vxgrab/ComFailure.h"
#include "vxgrab/CommandLine.h"
#include "vxgrab/ExitCode.h"
#include "vxgrab/GrabSession.h"
#include "vxgrab/StopSignal.h"

#include <windows.h>

#include <objbase.h>

#include <exception>
#include <string>

namespace {

/// COM for one scope.
class ComScope final {
public:
    explicit ComScope(COINIT apartment) : m_result(::CoInitializeEx(nullptr, apartment)) {}
    ~ComScope()
    {
        if (SUCCEEDED(m_result))
            ::CoUninitialize();
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

    [[nodiscard]] HRESULT Result() const { return m_result; }

private:
    const HRESULT m_result;
};

VxResult RunSession(const vxgrab::Options& options)
{
    const vxgrab::StopSignal stop;
    // Windows belong into an apartment of their own.
    const ComScope com(options.arePagesWanted ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED);
    if (FAILED(com.Result()))
        return vxgrab::ComFailure("start COM", com.Result());
    vxgrab::GrabSession session(options, stop);
    return session.Run();
}

int Main(int argc, const char* const* argv)
{
    const vxgrab::CommandLineResult commandLine = vxgrab::ReadCommandLine(console::Arguments(argc, argv));
    if (!commandLine.options) {
        (commandLine.exitCode == 0 ? console::PrintOutput : console::PrintError)(commandLine.text);
        return commandLine.exitCode;
    }
    const VxResult result = RunSession(*commandLine.options);
    if (!result.IsOK())
        console::PrintError("error: " + result.GetDescription().Narrow() + "\n");
    return static_cast<int>(vxgrab::ExitCodeFor(result));
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Main(argc, argv);
    } catch (const std::exception& error) {
        console::PrintError(std::string("error: ") + error.what() + "\n");
        return static_cast<int>(vxgrab::ExitCode::System);
    }
}
