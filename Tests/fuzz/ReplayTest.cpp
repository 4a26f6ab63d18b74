#include "fuzz/FuzzTarget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Chosen: a hundred times what the slowest kept input takes with sanitizers on a busy machine.
constexpr std::chrono::seconds kLongest{20};

std::vector<fs::path> FilesIn(const fs::path& folder)
{
    std::vector<fs::path> files;
    if (!fs::is_directory(folder))
        return files;
    for (const auto& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<char> ContentOf(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    EXPECT_TRUE(in) << file;
    return {std::istreambuf_iterator<char>(in), {}};
}

void Replay(const fuzz::Target& target, const fs::path& file)
{
    const auto content = ContentOf(file);
    const auto start = Clock::now();
    EXPECT_NO_THROW(target.run(std::as_bytes(std::span(content)))) << file;
    EXPECT_LT(Clock::now() - start, kLongest) << file;
}

class FuzzReplayTest : public testing::TestWithParam<fuzz::Target> {};

TEST_P(FuzzReplayTest, SurvivesTheInputsThatAreKept)
{
    const fs::path root = VX_FUZZ_INPUTS;
    const auto corpus = FilesIn(root / "corpus" / GetParam().name);

    EXPECT_FALSE(corpus.empty()) << "Tests/fuzz/corpus/" << GetParam().name << " has no input";
    for (const fs::path& file : corpus)
        Replay(GetParam(), file);
    for (const fs::path& file : FilesIn(root / "regressions" / GetParam().name))
        Replay(GetParam(), file);
}

TEST_P(FuzzReplayTest, SurvivesAnEmptyInput)
{
    EXPECT_NO_THROW(GetParam().run({}));
}

/// Every input cut off at every place: what a packet that is too short looks like.
TEST_P(FuzzReplayTest, SurvivesTheBeginningOfEveryInput)
{
    constexpr std::size_t kMostLengths = 100; // chosen: of a large input not every length
    for (const fs::path& file : FilesIn(fs::path(VX_FUZZ_INPUTS) / "corpus" / GetParam().name)) {
        const auto content = ContentOf(file);
        const std::size_t step = content.size() / kMostLengths + 1;
        for (std::size_t length = 0; length < content.size(); length += step)
            EXPECT_NO_THROW(GetParam().run(std::as_bytes(std::span(content).first(length))))
                << file << ' ' << length;
    }
}

std::string CaseName(const testing::TestParamInfo<fuzz::Target>& tested)
{
    std::string name = tested.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplayTest, testing::ValuesIn(fuzz::Targets()), CaseName);

/// A folder without a target would never be replayed.
TEST(FuzzInputsTest, BelongToATarget)
{
    for (const char* kind : {"corpus", "regressions"}) {
        for (const fs::path& folder : FilesIn(fs::path(VX_FUZZ_INPUTS) / kind)) {
            const auto isIts = [&](const fuzz::Target& target) { return folder.filename() == target.name; };
            EXPECT_TRUE(std::any_of(fuzz::Targets().begin(), fuzz::Targets().end(), isIts)) << folder;
        }
    }
}

} // namespace
