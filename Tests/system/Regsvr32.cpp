#include "system/Regsvr32.h"

#include "system/ChildProcess.h"

#include "support/graph/ModuleUnderTest.h"

#include <gtest/gtest.h>

DWORD Regsvr32(std::vector<std::wstring> options)
{
    options.insert(options.begin(), L"/s");
    options.push_back(ModuleUnderTest::File().wstring());
    std::wstring system(MAX_PATH, L'\0');
    system.resize(::GetSystemDirectoryW(system.data(), MAX_PATH));
    const ProgramRun run = RunProgram(system + L"\\regsvr32.exe", options, std::chrono::seconds(60));
    EXPECT_TRUE(run.exitCode) << "regsvr32 does not end";
    return run.exitCode.value_or(MAXDWORD);
}
