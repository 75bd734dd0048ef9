#include "Tests/support/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#if __has_include(<pty.h>)
#include <pty.h>
#else
#include <util.h>
#endif

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace {

struct Ends {
    int read = -1;
    int write = -1;
};

Ends MakePipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) != 0) ADD_FAILURE() << "no pipe: " << errno;
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    return {ends[0], ends[1]};
}

Ends MakeTerminal(int columns) {
    Ends ends;
    winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = 24;
    if (openpty(&ends.read, &ends.write, nullptr, nullptr, &size) != 0) {
        ADD_FAILURE() << "no terminal: " << errno;
    }
    fcntl(ends.read, F_SETFD, FD_CLOEXEC);
    fcntl(ends.write, F_SETFD, FD_CLOEXEC);
    return ends;
}

std::vector<char*> Pointers(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words)
        pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// What is added to the test's own: its terminal is a usual one, whatever the tests run on.
std::map<std::string, std::string> EnvironmentOf(const Command& options) {
    std::map<std::string, std::string> added = options.environment;
    if (options.terminal) added.insert({{"TERM", "xterm"}, {"NO_COLOR", ""}});
    return added;
}

std::vector<std::string> MergedEnvironment(const std::map<std::string, std::string>& added) {
    std::vector<std::string> merged;
    merged.reserve(added.size());
    for (const auto& [name, value] : added)
        merged.emplace_back(name).append("=").append(value);
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (added.count(text.substr(0, text.find('='))) == 0) merged.push_back(text);
    }
    return merged;
}

[[noreturn]] void Become(const Command& options, int output, int errors, char** words, char** environment) {
    setsid();
    if (options.terminal) ioctl(output, TIOCSCTTY, 0);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    for (const int descriptor : options.descriptors)
        fcntl(descriptor, F_SETFD, 0);
    if (!options.workingFolder.empty() && chdir(options.workingFolder.c_str()) != 0) _exit(126);
    if (options.prepare) options.prepare();
    execve(words[0], words, environment);
    _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const Options& options) {
    const Ends output = options.terminal ? MakeTerminal(options.columns) : MakePipe();
    const Ends errors = options.terminal ? output : MakePipe();
    const std::vector<std::string> environment = MergedEnvironment(EnvironmentOf(options));
    std::vector<char*> words = Pointers(options.words);
    std::vector<char*> variables = Pointers(environment);
    m_pid = fork();
    if (m_pid == 0) Become(options, output.write, errors.write, words.data(), variables.data());
    close(output.write);
    m_outputReader = std::thread([this, output] { Collect(output.read, m_output); });
    if (options.terminal) return;
    close(errors.write);
    m_errorReader = std::thread([this, errors] { Collect(errors.read, m_errors); });
}

ChildProcess::~ChildProcess() {
    if (m_status != -1) return;
    kill(m_pid, SIGKILL);
    Wait();
}

int ChildProcess::Wait() {
    if (m_status == -1) {
        while (waitpid(m_pid, &m_status, 0) < 0 && errno == EINTR) {
        }
        m_outputReader.join();
        if (m_errorReader.joinable()) m_errorReader.join();
    }
    return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : 128 + WTERMSIG(m_status);
}

void ChildProcess::Signal(int number) const {
    kill(m_pid, number);
}

bool ChildProcess::AwaitOutput(const std::string& text, std::size_t seen) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
        if (Output().find(text, seen) != std::string::npos) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

std::string ChildProcess::Output() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_output;
}

std::string ChildProcess::Errors() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_errors;
}

void ChildProcess::Collect(int descriptor, std::string& into) {
    std::array<char, 4096> chunk{};
    for (;;) {
        const ssize_t count = read(descriptor, chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;  // a terminal ends with EIO
        const std::lock_guard<std::mutex> lock(m_mutex);
        into.append(chunk.data(), static_cast<std::size_t>(count));
    }
    close(descriptor);
}

Finished RunToEnd(const Command& options) {
    ChildProcess child(options);
    const int code = child.Wait();
    return {code, child.Output(), child.Errors()};
}
