#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Prints one line per kind of work with the medians of everybody who did it, and ours as a multiple of each
/// other.
///
/// A benchmark is named WORK/WHO. Who measures something that several kinds of work are compared with is
/// named memcpy/BYTES, and a work names it by AddPeer. Runs must be repeated (--benchmark_repetitions) for
/// medians.
///
/// Owner:  a benchmark's main function.
/// Thread: one.
class MedianTable final : public benchmark::BenchmarkReporter {
public:
    /// Lines appear in the order of these calls.
    /// @param work      the part of the names before the slash
    /// @param peerName  the whole name of a benchmark whose median stands in the work's line, too
    void AddWork(const std::string& work, const std::string& peerName);

    /// What a work is to keep to; the table of all programs tells whether it does.
    /// @param goal  a multiple of the better of the others, as "1.3 x", or of one of them, as "1 x OpenCV",
    ///              or a time, as "10 ms"; several with commas between
    static void AddGoal(const std::string& work, const std::string& goal);

    /// Works of one row stand in one line of the table of all programs, with the one that does worst.
    static void SetRow(const std::string& work, const std::string& row);

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    struct Work {
        std::string name;
        std::string peerName;
    };
    using Medians = std::map<std::string, double>; // microseconds

    [[nodiscard]] Medians MediansOf(const Work& work) const; // by who
    static void PrintLine(const std::string& name, const Medians& medians,
                          const std::vector<std::string>& columns);

    Medians m_medians; // by the benchmark's name
    std::vector<Work> m_works;
};
