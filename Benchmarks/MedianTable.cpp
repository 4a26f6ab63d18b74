#include "MedianTable.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

constexpr double kMicrosecondsPerSecond = 1e6;
constexpr double kSmall = 100; // microseconds; chosen: below that whole ones say too little
constexpr int kNameWidth = 24;
constexpr int kColumnWidth = 19;
constexpr const char* kOurs = "ours";

std::string PartBeforeSlash(const std::string& name)
{
    return name.substr(0, name.find('/'));
}

} // namespace

void MedianTable::AddWork(const std::string& work, const std::string& peerName)
{
    m_works.push_back({work, peerName});
    // Result files name it, too, for tables made of several of them.
    benchmark::AddCustomContext("peer of " + work, peerName);
}

void MedianTable::AddGoal(const std::string& work, const std::string& goal)
{
    benchmark::AddCustomContext("goal of " + work, goal);
}

void MedianTable::SetRow(const std::string& work, const std::string& row)
{
    benchmark::AddCustomContext("row of " + work, row);
}

bool MedianTable::ReportContext(const Context& context)
{
    PrintBasicContext(&std::cerr, context);
    return true;
}

void MedianTable::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        const std::string& name = run.run_name.function_name;
        if (run.error_occurred)
            std::cerr << name << ": " << run.error_message << "\n";
        else if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
            m_medians[name] =
                run.real_accumulated_time / static_cast<double>(run.iterations) * kMicrosecondsPerSecond;
    }
}

MedianTable::Medians MedianTable::MediansOf(const Work& work) const
{
    Medians medians;
    for (const auto& [name, time] : m_medians)
        if (PartBeforeSlash(name) == work.name)
            medians[name.substr(work.name.size() + 1)] = time;
    if (const auto peer = m_medians.find(work.peerName); peer != m_medians.end())
        medians[PartBeforeSlash(work.peerName)] = peer->second;
    return medians;
}

void MedianTable::PrintLine(const std::string& name, const Medians& medians,
                            const std::vector<std::string>& columns)
{
    const auto ours = medians.find(kOurs);
    std::cout << std::left << std::setw(kNameWidth) << name << std::right;
    for (const std::string& column : columns) {
        std::ostringstream cell;
        cell << std::fixed;
        if (const auto median = medians.find(column); median != medians.end()) {
            cell << std::setprecision(median->second < kSmall ? 3 : 0) << median->second << " us";
            if (column != kOurs && ours != medians.end())
                cell << std::setprecision(2) << " (" << ours->second / median->second << ")";
        } else {
            cell << "-";
        }
        std::cout << std::setw(kColumnWidth) << cell.str();
    }
    std::cout << "\n";
}

void MedianTable::Finalize()
{
    if (m_medians.empty()) {
        std::cerr << "There are no medians: repeat the runs with --benchmark_repetitions=N, N at least 3.\n";
        return;
    }
    std::vector<std::string> columns{kOurs};
    for (const Work& work : m_works)
        for (const auto& [who, time] : MediansOf(work))
            if (std::ranges::find(columns, who) == columns.end())
                columns.push_back(who);
    std::cout << "Medians; in parentheses ours as a multiple of theirs.\n" << std::setw(kNameWidth) << "";
    for (const std::string& column : columns)
        std::cout << std::setw(kColumnWidth) << column;
    std::cout << "\n";
    for (const Work& work : m_works)
        if (const Medians medians = MediansOf(work); medians.contains(kOurs))
            PrintLine(work.name, medians, columns);
}
