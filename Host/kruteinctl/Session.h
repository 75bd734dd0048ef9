#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Host/kruteinctl/Presenter.h"
#include "Host/kruteinctl/Progress.h"
#include "Host/kruteinctl/StopSignals.h"

/// One command while it runs: what is known of its progress, whether the user wants it to stop, and the
/// waiting for either. Enter, Report and Changed may be called from any thread.
class Session {
 public:
    Session(Presenter& presenter, StopSignals& signals);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Enter(const std::string& phase);
    void Report(unsigned long long done, unsigned long long total, const std::string& current);
    void Note(const std::string& text) { m_presenter.Note(text); }

    /// Changes what an Await of another thread waits for.
    void Change(const std::function<void()>& change);

    /// Shows progress until the condition, which only Change makes true, holds or the user wants to stop.
    /// \return true when the condition holds, false to stop.
    bool AwaitOrStop(const std::function<bool()>& condition);

    /// The same without regard to the user's wish. \return false when it took longer than `atMost`.
    bool Await(const std::function<bool()>& condition, std::chrono::seconds atMost);

    std::chrono::seconds Elapsed() const;

 private:
    bool Wait(const std::function<bool()>& until, Progress::Clock::time_point deadline);
    void ToldToStop();

    Presenter& m_presenter;
    StopSignals& m_signals;
    const Progress::Clock::time_point m_start;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Progress m_progress;
    std::vector<ProgressState> m_milestones;  ///< one for each tenth, until it has been shown
    int m_tenth = 0;
    int m_stops = 0;  ///< how often the user has asked
};
