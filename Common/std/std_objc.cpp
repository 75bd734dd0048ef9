#include "Common/std/std_objc.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>

#include "Common/std/platform.h"
#include "Common/std/std_string.h"

namespace {

constexpr int kStartFailedExit = 127;
constexpr int kNoCommandLine = -1;
constexpr int kForkFailed = -2;
constexpr int kKillAttempts = 3;

/// The child between fork and exec. The host may have any number of threads, so only async-signal-safe calls
/// may stand here.
[[noreturn]] void BecomeShell(const char* commandLine, int inherited) {
    // A host thread may block or ignore signals; the tool must still be reachable by its stop signal.
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    std::signal(SIGTERM, SIG_DFL);
    if (inherited != krutein::kNoDescriptor) fcntl(inherited, F_SETFD, 0);
    execl("/bin/sh", "sh", "-c", commandLine, static_cast<char*>(nullptr));
    _exit(kStartFailedExit);
}

/// A process id travels as the context pointer of a background task.
void* ContextOf(pid_t pid) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(pid));  // NOLINT(performance-no-int-to-ptr)
}

pid_t PidOf(void* context) {
    return static_cast<pid_t>(reinterpret_cast<std::intptr_t>(context));
}

void Reap(void* context) {
    int status = 0;
    krutein::WaitForChild(PidOf(context), status);
}

std::string RealPath(const std::string& path) {
    char* const real = realpath(path.c_str(), nullptr);
    std::string result = real == nullptr ? std::string() : std::string(real);
    std::free(real);
    return result;
}

/// "" for the root.
std::string FolderAround(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || path == "/") return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool IsSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void KillInBackground(void* context) {
    const std::string command = STD_FormatA("kill %d", static_cast<int>(PidOf(context)));
    for (int attempt = 0; attempt < kKillAttempts; ++attempt) {
        if (std::system(command.c_str()) >= 0) return;
    }
}

}  // namespace

namespace krutein {

int RunShell(const char* commandLine, int* pid, bool wait, int* status, int inherited) {
    if (commandLine == nullptr) return kNoCommandLine;
    const pid_t child = fork();
    if (child < 0) return kForkFailed;
    if (child == 0) BecomeShell(commandLine, inherited);
    if (pid != nullptr) *pid = child;
    int raw = 0;
    if (wait) WaitForChild(child, raw);
    if (status != nullptr) *status = raw;
    return 0;
}

bool WaitForChild(pid_t child, int& status) {
    pid_t ended = -1;
    do {
        ended = waitpid(child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    if (ended < 0) status = 0;
    return ended >= 0;
}

void ReapInBackground(pid_t child) {
    STD_OBJC_ExcuteAsyncTask(Reap, ContextOf(child));
}

bool RemovingWouldTake(const std::string& target, const std::string& source) {
    struct stat removed {};
    struct stat seen {};
    if (stat(target.c_str(), &removed) != 0) return false;
    // Not by the text of the paths: on some file systems a folder answers to names in either case.
    for (std::string path = RealPath(source); !path.empty(); path = FolderAround(path)) {
        if (stat(path.c_str(), &seen) != 0 || !IsSameFile(seen, removed)) continue;
        // A file may have several names in its own right, and only one of them would go.
        if (S_ISDIR(seen.st_mode) || seen.st_nlink == 1 || RealPath(target) == path) return true;
    }
    return false;
}

}  // namespace krutein

int STD_OBJC_System(const char* commandLine, int* pid, bool wait, int* status) {
    return krutein::RunShell(commandLine, pid, wait, status, krutein::kNoDescriptor);
}

void STD_OBJC_KillProcessByPid(int pid) {
    if (pid < 1) return;
    STD_OBJC_ExcuteAsyncTask(KillInBackground, ContextOf(pid));
}
