#include "system/ChildProcess.h"

#include "support/graph/ModuleUnderTest.h"

#include <gtest/gtest.h>

#include <string>

// A host that lets the filter go only when its process ends: by then the system has ended the filter's
// threads, wherever they were. Nothing may wait for what they held, or for their answers.

namespace {

class ProcessEndTest : public testing::TestWithParam<const wchar_t*> {};

TEST_P(ProcessEndTest, AFilterThatIsLetGoThenDoesNotKeepTheProcess)
{
    constexpr std::chrono::seconds kPatience{30};
    ChildProcess process(WindowsPath(EnvironmentText(L"VX_PARTNER")), {L"end", GetParam()});

    const auto exitCode = process.WaitForEnd(kPatience);

    EXPECT_EQ(exitCode, 0u) << "it hangs, or has failed";
    EXPECT_EQ(process.Output(), "ending\nstopped\ndisconnected\nreleased\n");
}

INSTANTIATE_TEST_SUITE_P(HostModuleLoaded, ProcessEndTest, testing::Values(L"before", L"after"),
                         [](const auto& test) {
                             return std::wstring(test.param) == L"before" ? "BeforeTheFilters"
                                                                          : "AfterTheFilters";
                         });

} // namespace
