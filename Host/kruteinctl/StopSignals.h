#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// Turns SIGINT, SIGTERM and SIGHUP into calls of a function, on a thread of its own. Make one before any
/// other thread: the signals are blocked in this thread and in all that it starts.
class StopSignals {
 public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Who is told of each signal from now on; calls come one at a time. Null for nobody: then a signal ends
    /// the process as it would without this object.
    void Tell(std::function<void()> listener);

 private:
    void Wait();

    std::atomic<bool> m_ending{false};
    std::mutex m_mutex;
    std::function<void()> m_listener;
    std::thread m_thread;
};
