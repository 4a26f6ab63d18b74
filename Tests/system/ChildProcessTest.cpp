#include "system/ChildProcess.h"

#include "support/graph/ModuleUnderTest.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using testing::HasSubstr;

ProgramRun Partner(const std::vector<std::wstring>& arguments)
{
    return RunProgram(WindowsPath(EnvironmentText(L"VX_PARTNER")), arguments, std::chrono::seconds(60));
}

TEST(ChildProcessTest, CollectsTheOutputAndTheExitCode)
{
    const ProgramRun run = Partner({L"no such thing"});

    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_THAT(run.output, HasSubstr("usage:"));
}

TEST(ChildProcessTest, ReadingEndsWithTheProgramAlthoughAnotherProcessHasInheritedItsOutput)
{
    const std::string kFound = "left behind=";
    const auto start = std::chrono::steady_clock::now();

    const ProgramRun run = Partner({L"leave-behind"});

    EXPECT_EQ(run.exitCode, 0u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30))
        << "it waited for the other one";
    const auto place = run.output.find(kFound);
    ASSERT_NE(place, std::string::npos) << run.output;
    const auto number = static_cast<DWORD>(std::stoul(run.output.substr(place + kFound.size())));
    const HANDLE other = ::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, number);
    ASSERT_NE(other, nullptr) << "the other process does not run any more: this has shown nothing";
    EXPECT_EQ(::WaitForSingleObject(other, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    ::TerminateProcess(other, 0);
    ::CloseHandle(other);
}

TEST(ChildProcessTest, TellsThatAProgramStillRunsAndEndsIt)
{
    ChildProcess process(WindowsPath(EnvironmentText(L"VX_PARTNER")), {L"linger"});

    EXPECT_EQ(process.WaitForEnd(std::chrono::milliseconds(1)), std::nullopt);
    EXPECT_FALSE(process.WaitForOutput("anything", std::chrono::milliseconds(1)));
    process.Kill();
    EXPECT_TRUE(process.WaitForEnd(std::chrono::seconds(30)));
}

} // namespace
