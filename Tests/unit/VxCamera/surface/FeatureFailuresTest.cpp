#include "VxCamera/surface/FeatureFailures.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace surface {
namespace {

using namespace std::chrono_literals;

// A description of 16 MiB has room for about as many.
constexpr int kManyFeatures = 100'000;

TEST(FeatureFailuresTest, AFeatureThatWasNotReachedIsNamedOnce)
{
    FeatureFailures failures;
    failures.Note("Width", VxResult(VxError::LinkLost, "gone"));
    for (const char* name : {"Gain", "Gamma", "Gain"})
        failures.NoteUnreached(name);

    EXPECT_EQ(failures.Summary("could not be read").GetDescription().Narrow(),
              "1 of 1 features could not be read: Width: gone; not reached: Gain, Gamma");
}

TEST(FeatureFailuresTest, TheEndOfTheTimeSaysWhatCanBeDone)
{
    const auto text = FeatureFailures::TimeIsOver(30s).GetDescription().Narrow();

    EXPECT_TRUE(text.ends_with("; check the network and try again")) << text;
}

TEST(FeatureFailuresTest, VeryManyFeaturesThatWereNotReachedAreNotedInShortTime)
{
    FeatureFailures failures;
    failures.Note("Width", VxResult(VxError::LinkLost, "gone"));
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kManyFeatures; ++i)
        failures.NoteUnreached("SelectedFeature" + std::to_string(kManyFeatures + i));

    // Milliseconds; a search through all names for each would take many times this limit.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
    EXPECT_TRUE(failures.Summary("could not be read")
                    .GetDescription()
                    .Narrow()
                    .ends_with(", SelectedFeature100019, and 99980 more"));
}

} // namespace
} // namespace surface
