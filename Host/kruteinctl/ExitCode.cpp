#include "Host/kruteinctl/ExitCode.h"

#include <fmt/format.h>

#include <algorithm>

#include "Host/ToolCodes.h"
#include "Module/BackupLib/BackupMgr.h"
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

constexpr RunCodeRow kJobResults[] = {
    {kJobDone, ExitCode::kDone, "done"},
    {kJobNoDevice, ExitCode::kNoDevice, "there is no device"},
    {kJobNothingNeeded, ExitCode::kNoData,
     "the device has no files of the wanted types: choose other types, or make a full backup"},
    {kJobCannotOpenManifestDb, ExitCode::kBackupDamaged,
     "the catalogue of what the device sent, Manifest.db, cannot be opened: back up again"},
    {kJobRecordNotWritten, ExitCode::kNotWritable,
     "the backup's record, backup_config.ini, could not be written: look at the destination"},
    {kJobNoFolder, ExitCode::kNotWritable, "the backup's folder could not be made: look at the destination"},
    {kJobNoRecords, ExitCode::kNoData,
     "none of the wanted apps has any records on the device: choose other types, or make a full backup"},
    {kJobCancelled, ExitCode::kStopped, "stopped; no backup was made"},
    {kJobUnknownType, ExitCode::kUsage, "no such type of backup"},
    {kJobNoIdentifier, ExitCode::kNoDevice, "the device does not tell its identifier: connect it again"},
    {kJobAlreadyRunning, ExitCode::kFailed, "another job is running: wait for its end"},
    {kJobNoQuery, ExitCode::kNotConfigured,
     "nothing is configured for the wanted types: look at Resources/Config/vm_config.ini"},
    {kJobNoDomains, ExitCode::kNotConfigured,
     "nothing is configured for the wanted types: look at Resources/Config/vm_config.ini"},
    {kJobCannotOpenMbdb, ExitCode::kBackupDamaged,
     "the catalogue of what the device sent, Manifest.mbdb, cannot be opened: back up again"},
    {kJobUnknownVersion, ExitCode::kFailed, "the device does not tell its system version: connect it again"},
};

template <std::size_t Count>
const RunCodeRow* RowOf(const RunCodeRow (&rows)[Count], int code) {
    const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                         [code](const RunCodeRow& each) { return each.runCode == code; });
    return row == std::end(rows) ? nullptr : row;
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
        {ExitCode::kNoData, "no_data", "the device has nothing of the wanted types"},
        {ExitCode::kEncrypted, "encrypted", "the backup is encrypted and cannot be looked into"},
        {ExitCode::kNotConfigured, "not_configured", "nothing is configured for the wanted types"},
        {ExitCode::kNoDaemon, "no_daemon", "no device daemon is running"},
        {ExitCode::kSeveralDevices, "several_devices", "several devices are connected, and none was named"},
        {ExitCode::kNotPaired, "not_paired", "the device does not trust this computer"},
        {ExitCode::kDeviceLocked, "device_locked", "the device is locked with its passcode"},
        {ExitCode::kDeviceGone, "device_gone", "the device was disconnected in the middle"},
        {ExitCode::kDeviceSilent, "device_silent", "the device did not answer in time"},
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
    const RunCodeRow* const row = RowOf(kRunCodes, runCode);
    return row == nullptr ? ExitCode::kFailed : row->code;
}

std::string WordsForRun(int runCode) {
    const RunCodeRow* const row = RowOf(kRunCodes, runCode);
    return fmt::format("{} (code {})", row == nullptr ? "the backup tool failed" : row->words, runCode);
}

ExitCode ExitCodeOfJob(int result) {
    const RunCodeRow* const row = RowOf(kJobResults, result);
    return row == nullptr ? ExitCodeOfRun(result) : row->code;
}

std::string WordsForJob(int result) {
    const RunCodeRow* const row = RowOf(kJobResults, result);
    return row == nullptr ? "backup failed: " + WordsForRun(result)
                          : fmt::format("{} (code {})", row->words, result);
}
