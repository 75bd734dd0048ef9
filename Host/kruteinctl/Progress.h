#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

/// What is known of a run at one moment.
struct ProgressState {
    std::string phase;               ///< "starting", "backing up", "finishing" and the like
    std::optional<double> fraction;  ///< 0 to 1; nothing while percent means nothing
    std::uint64_t done = 0;          ///< files
    std::uint64_t total = 0;
    std::string current;  ///< printable; "" when not known
    std::chrono::seconds elapsed{0};
    std::optional<std::chrono::seconds> remaining;
};

/// Makes sense of the tool's numbers: what is shown never runs backwards, whatever they do.
class Progress {
 public:
    using Clock = std::chrono::steady_clock;

    explicit Progress(Clock::time_point start) : m_start(start) {}

    /// Goes over to a phase of the run without numbers of its own.
    void Enter(const std::string& phase);

    /// A report of the tool: files done, files in all, what it is at.
    void Report(unsigned long long done, unsigned long long total, const std::string& current);

    ProgressState At(Clock::time_point now) const;

 private:
    std::optional<std::chrono::seconds> Remaining(Clock::duration elapsed) const;

    Clock::time_point m_start;
    std::string m_phase;
    bool m_counting = false;
    std::uint64_t m_done = 0;
    std::uint64_t m_total = 0;
    double m_fraction = 0;
    std::string m_current;
};
