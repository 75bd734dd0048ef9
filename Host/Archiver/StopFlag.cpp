#include "Host/Archiver/StopFlag.h"

#include <csignal>

namespace krutein {
namespace {

constexpr int kSignalStatus = 128;

volatile std::sig_atomic_t g_signal = 0;

void Raise(int signal) {
    g_signal = signal;
}

void Catch(int signal) {
    struct sigaction action {};
    action.sa_handler = Raise;  // without SA_RESTART: what waits is interrupted
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

/// Whoever started this program with the signal ignored (nohup, a job in the background) wants it to be so.
void CatchUnlessIgnored(int signal) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) return;
    Catch(signal);
}

}  // namespace

void InstallStopHandlers() {
    // The library cancels with SIGTERM. A host that ignores it for itself hands that down, but does not mean
    // this program.
    Catch(SIGTERM);
    CatchUnlessIgnored(SIGINT);
    CatchUnlessIgnored(SIGHUP);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool StopRequested() {
    return g_signal != 0;
}

void ThrowIfStopped() {
    if (const int signal = g_signal) throw Stopped{kSignalStatus + signal};
}

}  // namespace krutein
