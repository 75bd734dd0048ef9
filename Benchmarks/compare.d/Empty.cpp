// A library with nothing in it, for comparison.

extern "C" __attribute__((visibility("default"))) int krutein_bench_empty() {
    return 0;
}
