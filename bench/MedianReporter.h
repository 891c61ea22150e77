#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

// Prints as the console does and keeps each benchmark's median real time (in
// its unit), so that a benchmark can print its ratios at the end.
class MedianReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.aggregate_name == "median")
                medians[run.run_name.function_name] = run.GetAdjustedRealTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }

    std::map<std::string, double> medians;
};
