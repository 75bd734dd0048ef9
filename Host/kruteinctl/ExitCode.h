#pragma once

#include <string>
#include <vector>

/// How kruteinctl ends. The one table behind --help, Docs/scripting.md and the tests. Never change a number.
enum class ExitCode : int {
    kDone = 0,
    kFailed = 1,
    kUsage = 2,
    kNoDevice = 3,
    kToolNotStarted = 4,
    kToolNoResult = 5,
    kNotWritable = 6,
    kDiskFull = 7,
    kBackupDamaged = 8,
    kNoBackup = 9,
    kNoData = 10,
    kEncrypted = 11,
    kNotConfigured = 12,
    kNoDaemon = 13,
    kSeveralDevices = 14,
    kNotPaired = 15,
    kDeviceLocked = 16,
    kDeviceGone = 17,
    kDeviceSilent = 18,
    kStopped = 130
};

struct ExitCodeRow {
    ExitCode code;
    const char* cause;    ///< a word for programs: "cause" of --json
    const char* meaning;  ///< a line for people
};

const std::vector<ExitCodeRow>& ExitCodeTable();
const char* CauseOf(ExitCode code);

/// The return code of a run (the library's or the backup tool's) as the exit code to end with.
ExitCode ExitCodeOfRun(int runCode);

/// The result of a typed job (a JobResult, or the return code of its run) as the exit code to end with.
ExitCode ExitCodeOfJob(int result);

/// The result of a typed job in words, with its number, and what can be done.
std::string WordsForJob(int result);

/// The return code of a run in words, with its number.
std::string WordsForRun(int runCode);
