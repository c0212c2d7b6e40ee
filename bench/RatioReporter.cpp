#include "RatioReporter.h"

#include <cstdio>

#include <unistd.h>

RatioReporter::RatioReporter()
    : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_Defaults : OO_Tabular)
{
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Iteration && !run.error_occurred)
            m_times[run.benchmark_name()] = { run.GetAdjustedRealTime(), run.GetAdjustedCPUTime() };
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
    const double realRatio = m->second.first / b->second.first;
    const double cpuRatio = m->second.second / b->second.second;
    std::printf("%-36s cpu %.3fx, real %.3fx (goal <= %.1fx) %s\n", label, cpuRatio, realRatio,
        goal, cpuRatio <= goal ? "met" : "MISSED");
}
