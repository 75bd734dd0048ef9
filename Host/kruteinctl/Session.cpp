#include "Host/kruteinctl/Session.h"

#include <cstdlib>

namespace {

constexpr std::chrono::milliseconds kTick{100};
/// Who asks for the third time does not want to wait for the clean way.
constexpr int kPatience = 3;

}  // namespace

Session::Session(Presenter& presenter, StopSignals& signals)
    : m_presenter(presenter), m_signals(signals), m_start(Progress::Clock::now()), m_progress(m_start) {
    m_signals.Tell([this] { ToldToStop(); });
}

Session::~Session() {
    m_signals.Tell(nullptr);
}

void Session::Enter(const std::string& phase) {
    Change([&] { m_progress.Enter(phase); });
}

void Session::Report(unsigned long long done, unsigned long long total, const std::string& current) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_progress.Report(done, total, current);
    // Seen at the next tick: a flood must not wake the screen. No tenth is left out, however quick it is.
    ProgressState state = m_progress.At(Progress::Clock::now());
    const int tenth = static_cast<int>(state.fraction.value_or(0) * 10);
    if (tenth > m_tenth) m_milestones.push_back(std::move(state));
    m_tenth = tenth;
}

void Session::Change(const std::function<void()>& change) {
    // Notified under the lock: who waits may end the session as soon as it has seen the change.
    const std::lock_guard<std::mutex> lock(m_mutex);
    change();
    m_changed.notify_all();
}

bool Session::AwaitOrStop(const std::function<bool()>& condition) {
    bool fulfilled = false;
    Wait([&] { return (fulfilled = condition()) || m_stops > 0; }, Progress::Clock::time_point::max());
    return fulfilled;
}

bool Session::Await(const std::function<bool()>& condition, std::chrono::seconds atMost) {
    return Wait(condition, Progress::Clock::now() + atMost);
}

std::chrono::seconds Session::Elapsed() const {
    return std::chrono::duration_cast<std::chrono::seconds>(Progress::Clock::now() - m_start);
}

bool Session::Wait(const std::function<bool()>& until, Progress::Clock::time_point deadline) {
    for (;;) {
        std::unique_lock<std::mutex> lock(m_mutex);
        const bool fulfilled = m_changed.wait_for(lock, kTick, until);
        const Progress::Clock::time_point now = Progress::Clock::now();
        const ProgressState state = m_progress.At(now);
        const std::vector<ProgressState> milestones = std::move(m_milestones);
        m_milestones.clear();
        lock.unlock();
        for (const ProgressState& milestone : milestones)
            m_presenter.Show(milestone);
        m_presenter.Show(state);
        if (fulfilled || now >= deadline) return fulfilled;
    }
}

void Session::ToldToStop() {
    int stops = 0;
    Change([&] { stops = ++m_stops; });
    if (stops >= kPatience) std::_Exit(static_cast<int>(ExitCode::kStopped));
}
