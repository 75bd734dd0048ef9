#include "Benchmarks/compare.d/Comparison.h"

#include <algorithm>
#include <cstdio>

namespace {

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace

Outcome Measure(const Comparison& comparison, int rounds) {
    comparison.prepare();
    std::vector<double> ratios;
    std::vector<double> ours;
    std::vector<double> theirs;
    Outcome outcome;
    outcome.name = comparison.name;
    outcome.against = comparison.against;
    outcome.goal = comparison.goal;
    for (int round = 0; round < rounds; ++round) {
        comparison.prepareRound();
        // Who comes first changes, so that neither always has the warmer machine.
        Cost mine;
        Cost other;
        if (round % 2 == 0) mine = RunWork(comparison.ours);
        other = RunWork(comparison.theirs);
        if (round % 2 == 1) mine = RunWork(comparison.ours);
        ours.push_back(mine.seconds);
        theirs.push_back(other.seconds);
        ratios.push_back(mine.seconds / other.seconds);
        outcome.oursPeakKib = std::max(outcome.oursPeakKib, mine.peakKib);
        outcome.theirsPeakKib = std::max(outcome.theirsPeakKib, other.peakKib);
    }
    comparison.finish();
    outcome.median = Median(ratios);
    outcome.least = *std::min_element(ratios.begin(), ratios.end());
    outcome.most = *std::max_element(ratios.begin(), ratios.end());
    outcome.oursSeconds = Median(ours);
    outcome.theirsSeconds = Median(theirs);
    return outcome;
}

namespace {

std::string GoalOf(const Outcome& outcome) {
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", outcome.goal);
    return outcome.goal > 0 ? text : "-";
}

bool IsMet(const Outcome& outcome) {
    return outcome.goal == 0 || outcome.median <= outcome.goal;
}

}  // namespace

void PrintTable(const std::vector<Outcome>& outcomes) {
    std::printf("%-50s %-30s %6s %6s %15s %9s %9s %9s\n", "work", "against", "ratio", "goal", "range",
                "ours s", "theirs s", "peak MiB");
    for (const Outcome& each : outcomes) {
        std::printf("%-50s %-30s %6.2f %6s %7.2f-%-7.2f %9.4f %9.4f %9.1f%s\n", each.name.c_str(),
                    each.against.c_str(), each.median, GoalOf(each).c_str(), each.least, each.most,
                    each.oursSeconds, each.theirsSeconds, static_cast<double>(each.oursPeakKib) / 1024,
                    IsMet(each) ? "" : "  MISSED");
    }
}

void PrintJson(const std::vector<Outcome>& outcomes) {
    for (const Outcome& each : outcomes) {
        std::printf(
            "{\"work\": \"%s\", \"against\": \"%s\", \"ratio\": %.4f, \"least\": %.4f, \"most\": %.4f, "
            "\"goal\": %.2f, "
            "\"met\": %s, \"ours_seconds\": %.6f, \"theirs_seconds\": %.6f, \"ours_peak_kib\": %ld, "
            "\"theirs_peak_kib\": %ld}\n",
            each.name.c_str(), each.against.c_str(), each.median, each.least, each.most, each.goal,
            IsMet(each) ? "true" : "false", each.oursSeconds, each.theirsSeconds, each.oursPeakKib,
            each.theirsPeakKib);
    }
}
