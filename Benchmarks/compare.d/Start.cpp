// What it takes to load the library and to make the first calls.

#include <cstdlib>

#include "Benchmarks/compare.d/Comparisons.h"

namespace {

constexpr int kStarts = 20;

double Starts(const char* library) {
    double seconds = 0;
    for (int n = 0; n < kStarts; ++n)
        seconds += RunProgram({KRUTEIN_BENCH_LOADER, library});
    return seconds / kStarts;
}

}  // namespace

std::vector<Comparison> StartComparisons(const Scale& /*scale*/) {
    Comparison comparison;
    comparison.name = "start a program, load the library, first calls";
    comparison.against = "the same with an empty library";
    comparison.ours = [] { return Starts(KRUTEIN_BENCH_LIBRARY); };
    comparison.theirs = [] { return Starts(KRUTEIN_BENCH_EMPTY_LIBRARY); };
    return {comparison};
}
