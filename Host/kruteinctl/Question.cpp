#include "Host/kruteinctl/Question.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace {

std::atomic<int> g_running{0};

}  // namespace

struct Question::State {
    std::mutex mutex;
    std::condition_variable ended;
    bool isOver = false;
    std::exception_ptr error;
};

Question::Question(std::function<void()> ask) : m_state(std::make_shared<State>()) {
    ++g_running;
    std::thread([state = m_state, ask = std::move(ask)] {
        std::exception_ptr error;
        try {
            ask();
        } catch (...) {
            error = std::current_exception();
        }
        --g_running;
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->error = std::move(error);
        state->isOver = true;
        state->ended.notify_all();
    }).detach();
}

Question::~Question() = default;

bool Question::AwaitUntil(Clock::time_point deadline) const {
    std::unique_lock<std::mutex> lock(m_state->mutex);
    if (!m_state->ended.wait_until(lock, deadline, [this] { return m_state->isOver; })) return false;
    // Handed over, so that the exception has one owner at a time.
    if (m_state->error) std::rethrow_exception(std::exchange(m_state->error, nullptr));
    return true;
}

bool Question::AnyIsLeftBehind() {
    return g_running > 0;
}
