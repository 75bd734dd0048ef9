#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Benchmarks/compare.d/Comparison.h"

/// What our side of a comparison takes for more and more data.
struct Growth {
    struct Point {
        int items = 0;
        double seconds = 0;
        long peakKib = 0;
    };
    std::string name;
    std::vector<Point> points;
};

/// Runs our side of each comparison once for each number of items.
/// \param names  a text that the name of a comparison must hold; "" for all.
std::vector<Growth> MeasureGrowth(const std::function<std::vector<Comparison>(int items)>& comparisons,
                                  const std::string& names);

/// With the exponents between neighbours (1: twice the items take twice the time), and the memory that an
/// item takes.
void PrintGrowth(const std::vector<Growth>& growth);
void PrintGrowthJson(const std::vector<Growth>& growth);
