#include "RatioReporter.h"

#include <cstdio>

#include <unistd.h>

RatioReporter::RatioReporter()
    : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_Defaults : OO_Tabular)
{
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    // A benchmark's repetitions are reported before their aggregates, so the median, when
    // there is one, is what stays.
    for (const Run& run : runs) {
        const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
        if ((run.run_type == Run::RT_Iteration || median) && !run.error_occurred)
            m_times[run.run_name.function_name]
                = { run.GetAdjustedRealTime(), run.GetAdjustedCPUTime() };
    }
    ConsoleReporter::ReportRuns(runs);
}

void RatioReporter::printRatio(
    const char* label, const std::string& measured, const std::string& baseline, double goal) const
{
    const auto m = m_times.find(measured);
    const auto b = m_times.find(baseline);
    if (m == m_times.end() || b == m_times.end() || b->second.first <= 0 || b->second.second <= 0)
        return;
    // On a shared machine the wall clock also measures the neighbours; the CPU time
    // (user + system) is what the code itself costs.
    const double cpuRatio = m->second.second / b->second.second;
    std::printf("%-36s cpu %.3fx, real %.3fx", label, cpuRatio, m->second.first / b->second.first);
    if (goal > 0)
        std::printf(" (goal <= %.1fx) %s", goal, cpuRatio <= goal ? "met" : "MISSED");
    std::printf("\n");
}
