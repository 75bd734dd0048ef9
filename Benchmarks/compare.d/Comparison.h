#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Benchmarks/compare.d/Side.h"

/// One row of the table: our work against what it is measured by, alternating, in several rounds.
struct Comparison {
    std::string name;
    std::string against;
    double goal = 0;                        ///< the ratio that is wanted, or less; 0 when it is only told
    int items = 0;                          ///< how many files, records and so on our work is about
    std::function<void()> prepare = [] {};  ///< once
    std::function<void()> prepareRound = [] {};  ///< before each pair, not measured
    std::function<void()> finish = [] {};        ///< after the last
    Work ours;
    Work theirs;
};

struct Outcome {
    std::string name;
    std::string against;
    double goal = 0;
    double median = 0;  ///< of the ratios of the rounds
    double least = 0;
    double most = 0;
    double oursSeconds = 0;  ///< median
    double theirsSeconds = 0;
    long oursPeakKib = 0;  ///< largest
    long theirsPeakKib = 0;
};

Outcome Measure(const Comparison& comparison, int rounds);

void PrintTable(const std::vector<Outcome>& outcomes);
void PrintJson(const std::vector<Outcome>& outcomes);
