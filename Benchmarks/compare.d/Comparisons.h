#pragma once

#include <vector>

#include "Benchmarks/compare.d/Comparison.h"

/// How much data the comparisons have.
struct Scale {
    int treeFiles = 200'000;
    int records = 1'000'000;
    int ids = 1'000'000;
    int rows = 500'000;
    int fileMiB = 1024;
    int keys = 10'000;
    int messages = 1'000'000;
    int jobFiles = 200'000;

    static Scale Quick() { return {20'000, 100'000, 200'000, 50'000, 128, 10'000, 100'000, 20'000}; }
    /// The same number of everything that can be counted.
    static Scale Of(int items) { return {items, items, items, items, items / 1000, items, items, items}; }
};

std::vector<Comparison> TreeComparisons(const Scale& scale);
std::vector<Comparison> CatalogueComparisons(const Scale& scale);
std::vector<Comparison> FileIdComparisons(const Scale& scale);
std::vector<Comparison> NeedSetComparisons(const Scale& scale);
std::vector<Comparison> FileSumComparisons(const Scale& scale);
std::vector<Comparison> IniComparisons(const Scale& scale);
std::vector<Comparison> MessageComparisons(const Scale& scale);
std::vector<Comparison> JobComparisons(const Scale& scale);
std::vector<Comparison> StartComparisons(const Scale& scale);
