#include "Module/BackupLib/MobileBackupTask.h"

#include <pthread.h>

#include <cstdint>
#include <cstdio>

#include "Common/log/Log.h"
#include "Common/std/format.h"
#include "Common/std/platform.h"
#include "Common/std/std_objc.h"
#include "Common/std/std_path.h"
#include "Common/std/std_process.h"
#include "Common/std/std_thread.h"
#include "Module/BackupLib/JobState.h"
#include "Module/BackupLib/MessagePipe.h"

using krutein::FormatWhole;
using krutein::MessagePipe;

namespace {

constexpr char kToolName[] = "HandsetArchiver";
constexpr char kSystemServiceName[] = "AppleMobileBackup";
constexpr int kAfterRunMs = 200;
constexpr int kNoExitMessageMs = 1000;
constexpr int kAfterKillMs = 300;
constexpr int kNothingStarted = -1;

/// Contents/MacOS/<host> of the bundle leads to Contents/Frameworks/<tool>.
std::string LocateTool() {
    std::string folder;
    STD_PATH_GetUpFolderA(STD_OBJC_GetCurrentAppPath(), folder);
    STD_PATH_GetUpFolderA(folder, folder);
    STD_PATH_AddSlashA(folder);
    std::string tool = folder + "Frameworks/" + kToolName;
    STD_PATH_FormatA(tool);
    return tool;
}

unsigned long long SignExtended(std::int32_t value) {
    return static_cast<unsigned long long>(static_cast<long long>(value));
}

}  // namespace

CMobileBackupTask::CMobileBackupTask() : m_toolPath(LocateTool()), m_pipe(std::make_unique<MessagePipe>()) {}

CMobileBackupTask::~CMobileBackupTask() = default;

int CMobileBackupTask::Init() {
    if (m_pipe->Open()) return kRunnerOk;
    KRUTEIN_LOG("pipe init fail!!");
    return kRunnerPipeFailed;
}

bool CMobileBackupTask::IsCancle() {
    // The flag is the caller's plain byte, written by another of its threads.
    if (m_cancel == nullptr || !__atomic_load_n(m_cancel, __ATOMIC_RELAXED)) return false;
    KRUTEIN_LOG("CMobileBackupTask:cancle task!");
    return true;
}

int CMobileBackupTask::StartFullBackup(std::string backupPath, std::string udid, CCallBack* callback,
                                       bool* cancel) {
    if (const int failed = Begin(kCallBackBackup, callback, cancel)) return failed;
    std::string command;
    const bool fits =
        FormatWhole(command, "\"%s\"  \"-backup|-backuppath|%s|-target|%s|-pipe|%d|-model|%d\" ",
                    m_toolPath.c_str(), backupPath.c_str(), udid.c_str(), m_pipe->WriteEnd(), m_model);
    KRUTEIN_LOG("ExecTask:%s\n", command.c_str());
    const int ret = RunCommand(fits, command);
    KRUTEIN_LOG("StartFullBackup:ret=%d\n", ret);
    return ret;
}

int CMobileBackupTask::StartFullRestore(std::string backupPath, std::string udid, std::string source,
                                        CCallBack* callback, bool* cancel, enRestoreOption /*option*/) {
    if (const int failed = Begin(kCallBackRestore, callback, cancel)) return failed;
    const auto address = reinterpret_cast<std::uintptr_t>(source.c_str());
    std::string command;
    const bool fits = FormatWhole(
        command, "\"%s\"  \"-restore|-backuppath|%s|-target|%s|-pipe|%d|-model|%d|-restore_option|%d\" ",
        m_toolPath.c_str(), backupPath.c_str(), udid.c_str(),
        static_cast<int>(static_cast<std::uint32_t>(address)), m_pipe->WriteEnd(), m_model);
    const int ret = RunCommand(fits, command);
    KRUTEIN_LOG("StartFullRestore:ret=%d\n", ret);
    return ret;
}

int CMobileBackupTask::StartSourceRestore(std::string backupPath, std::string udid, CCallBack* callback,
                                          bool* cancel) {
    if (const int failed = Begin(kCallBackRestore, callback, cancel)) return failed;
    std::string command;
    const bool fits =
        FormatWhole(command, "\"%s\"  \"-restore|-backuppath|%s|-target|%s|-pipe|%d|-model|%d\" ",
                    m_toolPath.c_str(), backupPath.c_str(), udid.c_str(), m_pipe->WriteEnd(), m_model);
    const int ret = RunCommand(fits, command);
    KRUTEIN_LOG("StartRestoreAllSetting:ret=%d\n", ret);
    return ret;
}

int CMobileBackupTask::StartGetBackupInfo(std::string backupPath, std::string udid, CCallBack* callback,
                                          bool* cancel) {
    if (const int failed = Begin(kCallBackBackupInfo, callback, cancel)) return failed;
    std::string command;
    const bool fits = FormatWhole(
        command, "\"%s\"  \"-version|16.0|-info|-backuppath|%s|-source|%s|-target|%s|-pipe|%d|-model|%d\" ",
        m_toolPath.c_str(), backupPath.c_str(), udid.c_str(), udid.c_str(), m_pipe->WriteEnd(), m_model);
    const int ret = RunCommand(fits, command);
    KRUTEIN_LOG("StartRestoreAllSetting:ret=%d\n", ret);
    return ret;
}

int CMobileBackupTask::ChangeBackupPasswd(std::string udid, std::string oldPassword, std::string newPassword,
                                          CCallBack* callback, bool* cancel) {
    if (const int failed = Begin(kCallBackChangePassword, callback, cancel)) return failed;
    std::string command;
    const bool fits =
        FormatWhole(command, "\"%s\"  \"-changepasswd|-target|%s|-old|%s|-new|%s|-pipe|%d|-model|%d\" ",
                    m_toolPath.c_str(), udid.c_str(), oldPassword.c_str(), newPassword.c_str(),
                    m_pipe->WriteEnd(), m_model);
    const int ret = RunCommand(fits, command);
    KRUTEIN_LOG("ChangeBackupPasswd:ret=%d\n", ret);
    return ret;
}

int CMobileBackupTask::StartRestoreAllSetting(std::string version, std::string backupPath, std::string source,
                                              std::string udid, CCallBack* callback, bool* cancel) {
    if (const int failed = Begin(kCallBackRestore, callback, cancel)) return failed;
    std::string command;
    const bool fits = FormatWhole(
        command,
        "\"%s\"  "
        "\"-version|%s|-restore_all_setting|-backuppath|%s|-source|%s|-target|%s|-pipe|%d|-model|%d\" ",
        m_toolPath.c_str(), version.c_str(), backupPath.c_str(), source.c_str(), udid.c_str(),
        m_pipe->WriteEnd(), m_model);
    const int ret = RunCommand(fits, command);
    KRUTEIN_LOG("StartRestoreAllSetting:ret=%d\n", ret);
    return ret;
}

int CMobileBackupTask::ExecTask(std::string commandLine) {
    KRUTEIN_LOG("ExecTask:%s...\n", commandLine.c_str());
    m_running = true;
    pthread_t reader{};
    if (!std_thread_create(ReadPipThreadProc, this, &reader)) {
        // Without a reader the tool would hang on a full pipe: it is not started.
        m_running = false;
        return NotStarted(commandLine, 0, kNothingStarted);
    }
    int pid = 0;
    int status = 0;
    const int result = krutein::RunShell(commandLine.c_str(), &pid, true, &status, m_pipe->WriteEnd());
    m_running = false;
    m_pipe->End();
    m_pipe->AwaitReader();
    std_thread_kill(reader);
    std_thread_wait(reader);
    if (result != 0 || pid < 1) return NotStarted(commandLine, pid, result);

    ps_sleep(kAfterRunMs);
    if (m_returnCode == kRunnerNoExitMessage) ps_sleep(kNoExitMessageMs);
    KRUTEIN_LOG("ExecTask:end! ret = %d\n", status);
    std::printf("ExecTask:end! ret = %d\n", m_returnCode.load());
    m_pipe->Close();
    return m_returnCode;
}

/// The frames below this one own nothing: where the platform runs no destructors for a cancelled thread,
/// nothing is lost.
void* CMobileBackupTask::ReadPipThreadProc(void* task) {
    int before = PTHREAD_CANCEL_ENABLE;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);  // MessagePipe allows it where it waits
    auto* const self = static_cast<CMobileBackupTask*>(task);
    self->OnReadPipe();
    KRUTEIN_LOG("CMobileBackupTask::ReadPipThreadProc exit!\n");
    self->m_pipe->Discard();
    self->m_pipe->Leave();
    pthread_setcancelstate(before, nullptr);
    return nullptr;
}

bool CMobileBackupTask::OnReadPipe() {
    if (!m_running) m_pipe->End();  // the tool was quicker than this thread: read what it left
    bool exitSeen = false;
    MessagePipe::Message message;
    while (!IsCancle() && m_pipe->Next(message)) {
        const krutein::PipeMessageHeader& header = message.header;
        if (header.type == krutein::kPipeProgress && !krutein::JobCancelled()) {
            SendCallBackSafe(m_callBack, m_callBackType, SignExtended(header.arg1), SignExtended(header.arg2),
                             message.payload);
        } else if (header.type == krutein::kPipeExit) {
            std::printf("ReadPipe线程已自动退出!(进程返回值:%d)", header.arg2);
            m_returnCode = header.arg2;
            exitSeen = true;
        }
    }
    return exitSeen;
}

/// What every operation does before its command line is formatted.
int CMobileBackupTask::Begin(CallBackType type, CCallBack* callback, bool* cancel) {
    KRUTEIN_LOG("init pipe...");
    if (const int failed = Init()) return failed;
    m_callBackType = type;
    m_callBack = callback;
    m_cancel = cancel;
    return kRunnerOk;
}

/// \param fits  false when the command line was too long for the shell and is therefore not run.
int CMobileBackupTask::RunCommand(bool fits, const std::string& commandLine) {
    return fits ? ExecTask(commandLine) : NotStarted(commandLine, 0, kNothingStarted);
}

int CMobileBackupTask::NotStarted(const std::string& commandLine, int pid, int result) {
    KRUTEIN_LOG("err: createProcess[%s] fail! pid = %d,nRet = %d\n", commandLine.c_str(), pid, result);
    m_pipe->Close();
    return kRunnerStartFailed;
}

int KillAppleBackupExe() {
    KRUTEIN_LOG("global_killAppleBackupExe...");
    ps_killAllProcess(kToolName);
    ps_killAllProcess(kSystemServiceName);
    return ps_sleep(kAfterKillMs);
}
