#pragma once

/// \file
/// Single runs of the backup tool.

#include <atomic>
#include <memory>
#include <string>

#include "Common/Export.h"
#include "Module/Sync/CallBack.h"

namespace krutein {
class MessagePipe;
}

/// What a restore shall do. The library hands the value on and does not look at it.
enum enRestoreOption : int {};

/// The return codes that the runner itself gives; all others come from the backup tool. Never change.
enum RunnerCode : int {
    kRunnerOk = 0,               ///< the tool reported success
    kRunnerNoExitMessage = 107,  ///< the tool ended without saying how it went, or could not be found
    kRunnerPipeFailed = 200,     ///< no pipe; nothing was started
    kRunnerStartFailed = 201     ///< no process could be started, or the command line was too long for one
};

/// Runs the backup tool `HandsetArchiver`, which lies in Contents/Frameworks of the host's bundle, and
/// reports what it says.
///
/// One object serves one run: make a fresh one for each. The operations block the calling thread until the
/// tool has ended, and 0.2 seconds longer (1.2 when the tool did not say how it went). Progress goes to the
/// callback on a reader thread that has ended when the operation returns. Progress messages are dropped while
/// the job of the backup manager (CBackupMgr) is being cancelled.
///
/// In all operations:
///  - texts are UTF-8 and go into a shell command between double quotes: refuse double quotes, backquotes,
///    dollar signs, backslashes, vertical bars and line ends in them before the call;
///  - `callback` may be null and stays the caller's;
///  - `cancel`, which may be null and stays the caller's, is only looked at, before each message: once it is
///    true, nothing more is forwarded. It does not end the tool; KillAppleBackupExe does;
///  - the result is one of RunnerCode or the tool's own code.
class KRUTEIN_API CMobileBackupTask {
 public:
    /// \{
    /// Finds the tool. A missing one is noticed when a run ends with kRunnerNoExitMessage.
    CMobileBackupTask();
    ~CMobileBackupTask();
    CMobileBackupTask(const CMobileBackupTask&) = delete;
    CMobileBackupTask& operator=(const CMobileBackupTask&) = delete;
    /// \}

    /// Value of the tool's -model option. Set it before the operation.
    int m_model = 0;

    /// Creates the pipe of a run. The operations do so themselves. \return 0 or kRunnerPipeFailed.
    int Init();

    /// True, with a line in the log, when the run's cancel flag is set.
    bool IsCancle();

    /// Makes a full backup of the device into the folder `backupPath`. Reports as kCallBackBackup.
    int StartFullBackup(std::string backupPath, std::string udid, CCallBack* callback, bool* cancel);

    /// Kept for hosts in the field; restore with StartSourceRestore. The command line of this operation names
    /// neither the pipe nor the option: the low 32 bits of the address of `source`'s text stand for the pipe,
    /// the pipe's descriptor for the model, and the model for the option. Reports as kCallBackRestore.
    int StartFullRestore(std::string backupPath, std::string udid, std::string source, CCallBack* callback,
                         bool* cancel, enRestoreOption option);

    /// Restores the device from its backup in the folder `backupPath`. Reports as kCallBackRestore.
    int StartSourceRestore(std::string backupPath, std::string udid, CCallBack* callback, bool* cancel);

    /// Asks for the size of the device's backup in `backupPath`. Reports as kCallBackBackupInfo.
    int StartGetBackupInfo(std::string backupPath, std::string udid, CCallBack* callback, bool* cancel);

    /// Changes the device's backup password. Reports as kCallBackChangePassword.
    int ChangeBackupPasswd(std::string udid, std::string oldPassword, std::string newPassword,
                           CCallBack* callback, bool* cancel);

    /// Restores all settings of the device from the backup of `source` in `backupPath`. Reports as
    /// kCallBackRestore.
    int StartRestoreAllSetting(std::string version, std::string backupPath, std::string source,
                               std::string udid, CCallBack* callback, bool* cancel);

    /// Runs one prepared command line and reads the pipe of Init meanwhile. Used by all operations.
    int ExecTask(std::string commandLine);

    /// Entry of the reader thread. \param task  a CMobileBackupTask. \return null.
    static void* ReadPipThreadProc(void* task);

    /// Reads messages and forwards them until the run is over or cancelled.
    /// \return true when the tool's exit message was among them.
    bool OnReadPipe();

 private:
    int Begin(CallBackType type, CCallBack* callback, bool* cancel);
    int RunCommand(bool fits, const std::string& commandLine);
    int NotStarted(const std::string& commandLine, int pid, int result);

    std::atomic<bool> m_running{false};
    CallBackType m_callBackType{};
    CCallBack* m_callBack = nullptr;
    std::string m_toolPath;
    bool* m_cancel = nullptr;
    std::atomic<int> m_returnCode{kRunnerNoExitMessage};
    std::unique_ptr<krutein::MessagePipe> m_pipe;
};

/// Ends the backup tool and the system's own backup service, by their names and wherever they run on this
/// computer, and sleeps 0.3 seconds. May be called from any thread. \return 0.
KRUTEIN_API int KillAppleBackupExe();
