// Benchmarks/compare: measures the library side by side with what it is compared with.

#include <cstdio>
#include <cstring>
#include <string>

#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Growth.h"

namespace {

constexpr int kRounds = 5;
constexpr int kQuickRounds = 3;

struct Options {
    bool quick = false;
    bool json = false;
    bool growth = false;
    std::string only;
};

bool Parse(int count, char** words, Options& options) {
    for (int i = 1; i < count; ++i) {
        if (std::strcmp(words[i], "--quick") == 0) {
            options.quick = true;
        } else if (std::strcmp(words[i], "--json") == 0) {
            options.json = true;
        } else if (std::strcmp(words[i], "--growth") == 0) {
            options.growth = true;
        } else if (std::strcmp(words[i], "--only") == 0 && i + 1 < count) {
            options.only = words[++i];
        } else {
            std::fprintf(stderr, "usage: compare [--quick | --growth] [--json] [--only TEXT]\n");
            return false;
        }
    }
    return true;
}

std::vector<Comparison> All(const Scale& scale) {
    std::vector<Comparison> all;
    for (const auto& group :
         {TreeComparisons, CatalogueComparisons, FileIdComparisons, NeedSetComparisons, FileSumComparisons,
          IniComparisons, MessageComparisons, JobComparisons, StartComparisons}) {
        for (Comparison& comparison : group(scale))
            all.push_back(std::move(comparison));
    }
    return all;
}

void Compare(const Options& options) {
    std::vector<Outcome> outcomes;
    for (const Comparison& comparison : All(options.quick ? Scale::Quick() : Scale())) {
        if (comparison.name.find(options.only) == std::string::npos) continue;
        std::fprintf(stderr, "%s ...\n", comparison.name.c_str());
        outcomes.push_back(Measure(comparison, options.quick ? kQuickRounds : kRounds));
    }
    if (options.json) {
        PrintJson(outcomes);
    } else {
        PrintTable(outcomes);
    }
}

void Grow(const Options& options) {
    const auto growth = MeasureGrowth([](int items) { return All(Scale::Of(items)); }, options.only);
    if (options.json) {
        PrintGrowthJson(growth);
    } else {
        PrintGrowth(growth);
    }
}

}  // namespace

int main(int count, char** words) {
    Options options;
    if (!Parse(count, words, options)) return 2;
    if (options.growth) {
        Grow(options);
    } else {
        Compare(options);
    }
    return 0;
}
