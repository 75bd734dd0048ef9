#pragma once

#include <stdexcept>
#include <string>

#include "Host/ToolCodes.h"

namespace krutein {

/// Why a run fails: what the exit message says, and a line for standard error.
class ToolError : public std::runtime_error {
 public:
    ToolError(ToolCode code, const std::string& message) : std::runtime_error(message), m_code(code) {}
    ToolCode Code() const { return m_code; }

 private:
    ToolCode m_code;
};

/// The return code for a system call that failed at the destination of a backup.
ToolCode CodeOfErrno(int error);

/// \param doing  what failed, with the path: "cannot create /x/y".
/// \param error  the error number; the text gets its description.
[[noreturn]] void ThrowErrno(const std::string& doing, int error);

/// The text in one line: control characters become blanks.
std::string OneLine(std::string text);

}  // namespace krutein
