#pragma once

#include <vector>

#include "Benchmarks/compare.d/Comparison.h"

/// How much data the comparisons have.
struct Scale {
    int treeFiles = 200'000;
    int records = 1'000'000;
    int ids = 1'000'000;
    int rows = 500'000;

    static Scale Quick() { return {20'000, 100'000, 200'000, 50'000}; }
};

std::vector<Comparison> TreeComparisons(const Scale& scale);
std::vector<Comparison> CatalogueComparisons(const Scale& scale);
std::vector<Comparison> FileIdComparisons(const Scale& scale);
std::vector<Comparison> NeedSetComparisons(const Scale& scale);
