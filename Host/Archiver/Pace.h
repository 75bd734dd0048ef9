#pragma once

#include <chrono>
#include <cstdint>

namespace krutein {

/// Slows a run down to so many files a second as the environment variable KRUTEIN_SAMPLE_FILES_PER_SECOND
/// says, for demonstrations and tests; without it the run goes at full speed.
class Pace {
 public:
    /// \throws ToolError when the variable is not a number above 0
    Pace();

    /// Returns when it is the next file's turn. \throws Stopped
    void Await();

 private:
    std::int64_t m_filesPerSecond = 0;  ///< 0 for full speed
    std::int64_t m_files = 0;
    std::chrono::steady_clock::time_point m_start;
};

}  // namespace krutein
