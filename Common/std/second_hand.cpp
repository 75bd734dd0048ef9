#include "Common/std/second_hand.h"

#include <system_error>
#include <utility>

namespace krutein {
namespace {

/// Tasks that wait for the other thread; enough for it never to be idle while the owner does one itself.
constexpr std::size_t kMostWaiting = 4;

}  // namespace

SecondHand::SecondHand() : m_alone(std::thread::hardware_concurrency() == 1) {}

SecondHand::~SecondHand() {
    Close();
}

void SecondHand::Do(std::function<void()> task) {
    if (m_alone || !HandOver(task)) task();
}

void SecondHand::Finish() {
    for (;;) {
        std::function<void()> task;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_waiting.empty()) break;
            task = std::move(m_waiting.back());
            m_waiting.pop_back();
        }
        task();
    }
    Close();
    if (m_thrown) std::rethrow_exception(std::exchange(m_thrown, nullptr));
}

/// \return false, with the task untouched, when the other thread has enough to do.
bool SecondHand::HandOver(std::function<void()>& task) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_waiting.size() >= kMostWaiting || !HasThread()) return false;
        m_waiting.push_back(std::move(task));
    }
    m_changed.notify_one();
    return true;
}

bool SecondHand::HasThread() {
    if (m_thread.joinable()) return true;
    try {
        m_closing = false;
        m_thread = std::thread(&SecondHand::Work, this);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void SecondHand::Work() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_closing || !m_waiting.empty(); });
        if (m_waiting.empty()) return;
        std::function<void()> task = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        std::exception_ptr thrown;
        try {
            task();
        } catch (...) {
            thrown = std::current_exception();
        }
        task = nullptr;  // what it holds is released outside of the lock
        lock.lock();
        if (thrown && !m_thrown) m_thrown = thrown;
    }
}

void SecondHand::Close() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closing = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

}  // namespace krutein
