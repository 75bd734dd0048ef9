#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// A program that a test runs, with what it printed.
class ChildProcess {
 public:
    struct Options {
        Options(std::vector<std::string> programAndArguments) : words(std::move(programAndArguments)) {}

        std::vector<std::string> words;                  ///< the program's path and its arguments
        std::map<std::string, std::string> environment;  ///< added to the test's own
        std::vector<int> descriptors;                    ///< further ones that the program inherits
        bool terminal = false;                           ///< both outputs are a terminal, read through Output
        int columns = 100;                               ///< of that terminal
        std::string workingFolder;                       ///< "" for the test's own
        std::function<void()> prepare;                   ///< called in the child before the program starts
    };

    explicit ChildProcess(const Options& options);
    /// Kills the program if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits for its end. \return the exit code, or 128 and the number of the signal that ended it.
    int Wait();
    void Signal(int number) const;
    pid_t Pid() const { return m_pid; }

    /// Waits up to 30 seconds until the output so far holds the text, behind its first `seen` bytes.
    bool AwaitOutput(const std::string& text, std::size_t seen = 0);

    /// What it printed so far; all of it after Wait.
    std::string Output();
    std::string Errors();

 private:
    void Collect(int descriptor, std::string& into);

    pid_t m_pid = -1;
    int m_status = -1;
    std::string m_output;
    std::string m_errors;
    std::mutex m_mutex;
    std::thread m_outputReader;
    std::thread m_errorReader;
};

using Command = ChildProcess::Options;

/// Runs a program to its end.
struct Finished {
    int code = -1;
    std::string output;
    std::string errors;
};
Finished RunToEnd(const Command& options);
