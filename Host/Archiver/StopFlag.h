#pragma once

/// How a run is stopped from outside: SIGTERM, SIGINT and SIGHUP raise a flag that all work looks at between
/// files and between the chunks of a file. System calls that wait are interrupted.
namespace krutein {

/// Thrown where work stops on request. Not a std::exception, so that no handler for errors takes it for one.
struct Stopped {
    int status;  ///< that the process ends with
};

/// Also has writes to a closed pipe and beyond a size limit fail instead of ending the process.
void InstallStopHandlers();

bool StopRequested();

/// \throws Stopped with 128 and the signal's number
void ThrowIfStopped();

}  // namespace krutein
