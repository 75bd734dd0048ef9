#include "Host/kruteinctl/ExitCode.h"

#include <fmt/format.h>

#include <algorithm>

#include "Host/ToolCodes.h"
#include "Module/BackupLib/MobileBackupTask.h"

namespace {

struct RunCodeRow {
    int runCode;
    ExitCode code;
    const char* words;
};

constexpr RunCodeRow kRunCodes[] = {
    {kRunnerOk, ExitCode::kDone, "done"},
    {kRunnerNoExitMessage, ExitCode::kToolNoResult, "the backup tool ended without a result"},
    {kRunnerPipeFailed, ExitCode::kFailed, "no pipe to the backup tool could be made"},
    {kRunnerStartFailed, ExitCode::kToolNotStarted, "the backup tool could not be started"},
    {kToolBadCommand, ExitCode::kFailed, "the backup tool did not understand its command line"},
    {kToolNoDevice, ExitCode::kNoDevice, "no such device is connected"},
    {kToolNotWritable, ExitCode::kNotWritable, "the destination cannot be written"},
    {kToolDiskFull, ExitCode::kDiskFull, "the disk is full"},
    {kToolBackupDamaged, ExitCode::kBackupDamaged, "the backup is damaged"},
    {kToolNoBackup, ExitCode::kNoBackup, "there is no such backup"},
    {kToolWrongPassword, ExitCode::kFailed, "the backup password is wrong"},
    {kToolFailed, ExitCode::kFailed, "the backup tool failed"},
};

const RunCodeRow* RowOf(int runCode) {
    const auto* const row =
        std::find_if(std::begin(kRunCodes), std::end(kRunCodes),
                     [runCode](const RunCodeRow& each) { return each.runCode == runCode; });
    return row == std::end(kRunCodes) ? nullptr : row;
}

}  // namespace

const std::vector<ExitCodeRow>& ExitCodeTable() {
    static const std::vector<ExitCodeRow> table = {
        {ExitCode::kDone, "done", "done"},
        {ExitCode::kFailed, "failed", "failed for another reason; the message tells"},
        {ExitCode::kUsage, "usage", "wrong usage; nothing was started"},
        {ExitCode::kNoDevice, "no_device", "no such device is connected"},
        {ExitCode::kToolNotStarted, "tool_not_started",
         "the backup tool was not found or could not be started"},
        {ExitCode::kToolNoResult, "tool_no_result", "the backup tool ended without a result"},
        {ExitCode::kNotWritable, "not_writable", "the destination cannot be written"},
        {ExitCode::kDiskFull, "disk_full", "the disk is full, or would be"},
        {ExitCode::kBackupDamaged, "backup_damaged", "the backup is damaged"},
        {ExitCode::kNoBackup, "no_backup", "there is no such backup"},
        {ExitCode::kStopped, "stopped", "stopped by Ctrl-C or a signal"},
    };
    return table;
}

const char* CauseOf(ExitCode code) {
    for (const ExitCodeRow& row : ExitCodeTable()) {
        if (row.code == code) return row.cause;
    }
    return "failed";
}

ExitCode ExitCodeOfRun(int runCode) {
    const RunCodeRow* const row = RowOf(runCode);
    return row == nullptr ? ExitCode::kFailed : row->code;
}

std::string WordsForRun(int runCode) {
    const RunCodeRow* const row = RowOf(runCode);
    return fmt::format("{} (code {})", row == nullptr ? "the backup tool failed" : row->words, runCode);
}
