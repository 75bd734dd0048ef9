#include "Host/kruteinctl/Progress.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Host/kruteinctl/Text.h"

namespace {

/// Before this much is done and known, an estimate would only jump.
constexpr double kEnoughDone = 0.02;
constexpr std::chrono::seconds kEnoughTime{1};

bool IsCount(unsigned long long number) {
    return number <= static_cast<unsigned long long>(std::numeric_limits<std::int32_t>::max());
}

}  // namespace

void Progress::Enter(const std::string& phase) {
    m_phase = phase;
    m_counting = false;
}

void Progress::Report(unsigned long long done, unsigned long long total, const std::string& current) {
    m_current = Printable(current);
    if (!IsCount(done) || !IsCount(total) || total == 0) return;  // negative, or not known yet
    m_counting = true;
    m_total = total;
    m_done = std::max<std::uint64_t>(m_done, std::min(done, total));
    m_fraction =
        std::max(m_fraction, static_cast<double>(std::min(done, total)) / static_cast<double>(total));
}

ProgressState Progress::At(Clock::time_point now) const {
    ProgressState state;
    const Clock::duration elapsed = now - m_start;
    state.phase = m_phase;
    state.elapsed = std::chrono::duration_cast<std::chrono::seconds>(elapsed);
    if (!m_counting) return state;
    state.fraction = m_fraction;
    state.done = std::min(m_done, m_total);
    state.total = m_total;
    state.current = m_current;
    state.remaining = Remaining(elapsed);
    return state;
}

std::optional<std::chrono::seconds> Progress::Remaining(Clock::duration elapsed) const {
    if (m_fraction < kEnoughDone || elapsed < kEnoughTime) return std::nullopt;
    const double seconds = std::chrono::duration<double>(elapsed).count() * (1 - m_fraction) / m_fraction;
    return std::chrono::seconds(std::llround(seconds));
}
