#include <fmt/format.h>
#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <exception>

#include "Tools/devicesim/Options.h"
#include "Tools/devicesim/Simulator.h"

namespace {

using devicesim::Simulator;

constexpr int kFailed = 1;
constexpr int kUsage = 2;

/// The signals that main waits for. Blocked before the first thread starts, so that no thread is hit by them.
sigset_t AwaitedSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&set, number);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    return set;
}

void LookForDevices(Simulator& simulator) {
    for (const std::string& problem : simulator.LookForDevices())
        fmt::print(stderr, "devicesim: {}\n", problem);
}

void Run(const Simulator::Settings& settings) {
    const sigset_t signals = AwaitedSignals();
    std::signal(SIGPIPE, SIG_IGN);
    Simulator simulator(settings);
    LookForDevices(simulator);
    simulator.Listen();
    fmt::print("ready: {} devices on {}\n", simulator.DeviceCount(), settings.socket);
    for (;;) {
        int number = 0;
        if (sigwait(&signals, &number) != 0) continue;
        if (number != SIGHUP) return;
        LookForDevices(simulator);
    }
}

}  // namespace

int main(int count, char** words) {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    try {
        std::string text;
        const std::optional<Simulator::Settings> settings = devicesim::ParseOptions(count, words, text);
        if (settings) {
            Run(*settings);
        } else {
            fmt::print("{}", text);
        }
        return 0;
    } catch (const devicesim::UsageError& error) {
        fmt::print(stderr, "devicesim: {}", error.what());
        return kUsage;
    } catch (const std::exception& error) {
        fmt::print(stderr, "devicesim: {}\n", error.what());
        return kFailed;
    }
}
