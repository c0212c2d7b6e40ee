#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

// Prints as usual and keeps each benchmark's real and CPU time per iteration (the median
// when run with --benchmark_repetitions), so a program can print its figures as ratios
// against the baseline measured in the same run.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal, so that saved runs stay plain text.
    RatioReporter();

    void ReportRuns(const std::vector<Run>& runs) override;

    // "label  cpu N.NNNx, real N.NNNx", then "(goal <= G) met|MISSED" when a goal is
    // given; nothing when either run is missing. Both are benchmark function names.
    void printRatio(const char* label, const std::string& measured, const std::string& baseline,
        double goal = 0) const;

private:
    std::map<std::string, std::pair<double, double>> m_times; // real, cpu
};
