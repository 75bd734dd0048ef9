#pragma once

#include <cstddef>
#include <string>

// What the comparisons ask of their backup tool, by its environment.

/// A prepared backup that the tool moves into place.
constexpr char kBenchBackup[] = "KRUTEIN_BENCH_BACKUP";
/// So many progress messages before the exit message.
constexpr char kBenchMessages[] = "KRUTEIN_BENCH_MESSAGES";
/// A file for the time of the tool's end, in seconds of the steady clock.
constexpr char kBenchEnd[] = "KRUTEIN_BENCH_END";

constexpr std::size_t kBenchMessageBytes = 64;

/// Where the tool lies, seen from the running program.
std::string BenchToolPath();
