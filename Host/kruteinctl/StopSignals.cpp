#include "Host/kruteinctl/StopSignals.h"

#include <pthread.h>

#include <csignal>
#include <cstdlib>

#include "Host/kruteinctl/ExitCode.h"

namespace {

/// Wakes the waiting thread at its end; not one of the signals that anybody sends us.
constexpr int kWakeUp = SIGUSR2;

sigset_t Signals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, kWakeUp})
        sigaddset(&set, number);
    return set;
}

}  // namespace

StopSignals::StopSignals() {
    const sigset_t set = Signals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    m_thread = std::thread([this] { Wait(); });
}

StopSignals::~StopSignals() {
    m_ending = true;
    pthread_kill(m_thread.native_handle(), kWakeUp);
    m_thread.join();
}

void StopSignals::Tell(std::function<void()> listener) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listener = std::move(listener);
}

void StopSignals::Wait() {
    const sigset_t set = Signals();
    for (;;) {
        int number = 0;
        if (sigwait(&set, &number) != 0) continue;
        if (m_ending) return;
        if (number == kWakeUp) continue;
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_listener) std::_Exit(static_cast<int>(ExitCode::kStopped));
        m_listener();
    }
}
