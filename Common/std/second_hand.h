#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace krutein {

/// Shares tasks between the thread that owns it and one more, for work on many files in which the order does
/// not show. Internal.
///
/// The other thread starts with the first task that is offered to it, and takes what it has time for; the
/// owner does the rest. Where there is only one processor, or no thread to be had, the owner does everything.
/// Tasks must not touch the same data without a lock of their own.
class SecondHand {
 public:
    SecondHand();
    /// Waits for the other thread; what a task threw is lost unless Finish was called.
    ~SecondHand();
    SecondHand(const SecondHand&) = delete;
    SecondHand& operator=(const SecondHand&) = delete;

    /// Runs the task, now on this thread or soon on the other.
    void Do(std::function<void()> task);

    /// Returns when all tasks have run, with what the first of them threw on the other thread.
    void Finish();

 private:
    bool HandOver(std::function<void()>& task);
    bool HasThread();
    void Work();
    void Close();

    const bool m_alone;  ///< one processor
    std::thread m_thread;

    // Shared, under the mutex.
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_waiting;
    bool m_closing = false;
    std::exception_ptr m_thrown;
};

}  // namespace krutein
