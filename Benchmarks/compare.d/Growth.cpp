#include "Benchmarks/compare.d/Growth.h"

#include <cmath>
#include <cstdio>

namespace {

constexpr int kItems[] = {10'000, 100'000, 1'000'000};
constexpr double kBytesInAKib = 1024;

double Exponent(const Growth::Point& less, const Growth::Point& more) {
    return std::log(more.seconds / less.seconds) / std::log(static_cast<double>(more.items) / less.items);
}

/// Between the first and the last, so that what the process takes anyway does not count.
double BytesPerItem(const Growth& growth) {
    const Growth::Point& first = growth.points.front();
    const Growth::Point& last = growth.points.back();
    return static_cast<double>(last.peakKib - first.peakKib) * kBytesInAKib / (last.items - first.items);
}

Growth::Point MeasureOurs(const Comparison& comparison) {
    comparison.prepare();
    comparison.prepareRound();
    const Cost cost = RunWork(comparison.ours);
    comparison.finish();
    return {comparison.items, cost.seconds, cost.peakKib};
}

}  // namespace

std::vector<Growth> MeasureGrowth(const std::function<std::vector<Comparison>(int items)>& comparisons,
                                  const std::string& names) {
    std::vector<Growth> all;
    const std::vector<Comparison> named = comparisons(kItems[0]);
    for (std::size_t row = 0; row < named.size(); ++row) {
        if (named[row].items == 0 || named[row].name.find(names) == std::string::npos) continue;
        Growth growth;
        growth.name = named[row].name;
        for (const int items : kItems) {
            const Comparison comparison = comparisons(items)[row];
            std::fprintf(stderr, "%s ...\n", comparison.name.c_str());
            growth.points.push_back(MeasureOurs(comparison));
        }
        all.push_back(growth);
    }
    return all;
}

void PrintGrowth(const std::vector<Growth>& growth) {
    std::printf("%-46s %10s %10s %10s %13s %12s\n", "work", "items", "seconds", "peak MiB", "exponent",
                "bytes/item");
    for (const Growth& each : growth) {
        for (std::size_t i = 0; i < each.points.size(); ++i) {
            const Growth::Point& point = each.points[i];
            std::printf("%-46s %10d %10.4f %10.1f", i == 0 ? each.name.c_str() : "", point.items,
                        point.seconds, static_cast<double>(point.peakKib) / kBytesInAKib);
            if (i > 0) std::printf(" %13.2f", Exponent(each.points[i - 1], point));
            if (i + 1 == each.points.size()) std::printf(" %12.0f", BytesPerItem(each));
            std::printf("\n");
        }
    }
}

void PrintGrowthJson(const std::vector<Growth>& growth) {
    for (const Growth& each : growth) {
        for (const Growth::Point& point : each.points) {
            std::printf("{\"work\": \"%s\", \"items\": %d, \"seconds\": %.6f, \"peak_kib\": %ld}\n",
                        each.name.c_str(), point.items, point.seconds, point.peakKib);
        }
    }
}
