#include "VxBase/VxString.h"

#include "vxgrab/ComFailure.h"
#include "vxgrab/CommandLine.h"
#include "vxgrab/Console.h"
#include "vxgrab/ExitCode.h"
#include "vxgrab/GrabSession.h"
#include "vxgrab/StopSignal.h"

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include <exception>
#include <string>
#include <vector>

namespace {

/// The arguments in UTF-8, whatever the code page of the system.
std::vector<std::string> Arguments()
{
    int count = 0;
    LPWSTR* const texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; texts != nullptr && i < count; ++i)
        arguments.push_back(VxUtf8FromWide(texts[i]));
    ::LocalFree(texts);
    return arguments;
}

/// COM for one scope.
class ComScope final {
public:
    ComScope() : m_result(::CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
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
    const ComScope com;
    if (FAILED(com.Result()))
        return vxgrab::ComFailure("start COM", com.Result());
    vxgrab::GrabSession session(options, stop);
    return session.Run();
}

int Main()
{
    const vxgrab::CommandLineResult commandLine = vxgrab::ReadCommandLine(Arguments());
    if (!commandLine.options) {
        (commandLine.exitCode == 0 ? vxgrab::PrintOutput : vxgrab::PrintError)(commandLine.text);
        return commandLine.exitCode;
    }
    const VxResult result = RunSession(*commandLine.options);
    if (!result.IsOK())
        vxgrab::PrintError("error: " + result.GetDescription().Narrow() + "\n");
    return static_cast<int>(vxgrab::ExitCodeFor(result));
}

} // namespace

int main()
{
    try {
        return Main();
    } catch (const std::exception& error) {
        vxgrab::PrintError(std::string("error: ") + error.what() + "\n");
        return static_cast<int>(vxgrab::ExitCode::System);
    }
}
