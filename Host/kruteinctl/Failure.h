#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "Host/kruteinctl/ExitCode.h"

/// Ends a command: with this exit code and this message for the user.
class Failure : public std::runtime_error {
 public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), m_code(code) {}

    /// The end of a run whose return code was not 0: `what` happened, and why in words.
    static Failure OfRun(const std::string& what, int runCode) {
        Failure failure(ExitCodeOfRun(runCode), what + ": " + WordsForRun(runCode));
        failure.m_runCode = runCode;
        return failure;
    }

    /// The end of a typed job whose result was not 0.
    static Failure OfJob(int result, const std::string& more) {
        Failure failure(ExitCodeOfJob(result), WordsForJob(result) + more);
        failure.m_runCode = result;
        return failure;
    }

    ExitCode Code() const { return m_code; }
    std::optional<int> RunCode() const { return m_runCode; }

 private:
    ExitCode m_code;
    std::optional<int> m_runCode;
};
