#include "Module/Sync/Backup.h"

#include <chrono>
#include <ctime>
#include <sstream>
#include <system_error>
#include <thread>

#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Common/std/std_process.h"
#include "Common/std/std_string.h"
#include "Module/BackupLib/MobileBackupTask.h"

namespace {

constexpr int kAfterStopMs = 300;
constexpr int kNameTakenMs = 200;
constexpr std::chrono::seconds kInfoDeadline{30};
constexpr char kTemporary[] = "temp";

/// Runs `work` on a thread that nobody waits for. The exception of a refused thread has one text on all
/// platforms.
template <typename Work>
void Detach(Work work) {
    try {
        std::thread(std::move(work)).detach();
    } catch (const std::system_error& refused) {
        throw std::system_error(refused.code(), "thread constructor failed");
    }
}

void SendEvent(CSyncCallBack* callback, SyncEvent event, unsigned long long arg1, unsigned long long arg2,
               void* data) {
    if (callback != nullptr) callback->OnStateChange(event, arg1, arg2, data);
}

unsigned long long AsArgument(int code) {
    return static_cast<unsigned long long>(static_cast<long long>(code));
}

SyncEvent HostEvent(CallBackType type) {
    if (type == kCallBackRestore) return kSyncEventRestoreProgress;
    if (type == kCallBackBackup) return kSyncEventBackupProgress;
    return kSyncEventOther;
}

/// "-20170405-134501": the local time of now.
std::string TimeStamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32] = {};
    std::strftime(text, sizeof text, "-%Y%m%d-%H%M%S", &local);
    return text;
}

/// `path`, or `path` with the time when that name is taken. Two backups of the same second wait for the next
/// one: moving a folder onto a folder would put it inside.
std::string FreeName(const std::string& path) {
    std::string name = path;
    while (STD_PATH_ExistA(name)) {
        if (name != path) ps_sleep(kNameTakenMs);
        name = path + TimeStamp();
    }
    return name;
}

}  // namespace

CBackup* CBackup::m_pBackup = nullptr;

CBackup* CBackup::GetInstance() {
    static CBackup* const instance = m_pBackup = new CBackup;
    return instance;
}

void CBackup::StartBackup(const char* udid, const char* folder, CSyncCallBack* callback) {
    m_hostCallBack = callback;
    if (udid == nullptr || folder == nullptr) return;
    const std::string target = folder;
    Detach([this, device = std::string(udid), target, temporary = target + kTemporary, callback] {
        RunBackup(device, target, temporary, callback);
    });
}

void CBackup::StopBackup(CSyncCallBack* callback) {
    Detach([this, callback] { RunStop(callback); });
}

void CBackup::StartRestore(const char* udid, const char* folder, CSyncCallBack* callback) {
    m_hostCallBack = callback;
    if (udid == nullptr || folder == nullptr) return;
    Detach([this, source = std::string(folder), device = std::string(udid), callback] {
        RunRestore(device, source, callback);
    });
}

void CBackup::StopRestore(CSyncCallBack* callback) {
    StopBackup(callback);
}

long long CBackup::GetBackupSize(const char* udid, const char* folder) {
    if (udid != nullptr && folder != nullptr) {
        CMobileBackupTask task;
        task.m_model = 0;
        task.StartGetBackupInfo(folder, udid, this, nullptr);
    }
    return GetTotalSize();
}

int CBackup::OnStateChange(CallBackType type, unsigned long long arg1, unsigned long long arg2, void* data) {
    if (type == kCallBackBackupInfo && data != nullptr) {
        ParseInfo(static_cast<const char*>(data));
        {
            const std::lock_guard<std::mutex> lock(m_infoMutex);
            m_infoReady = true;
        }
        m_infoArrived.notify_all();
    }
    SendEvent(m_hostCallBack, HostEvent(type), arg1, arg2, data);
    return 0;
}

long long CBackup::GetTotalSize() {
    std::unique_lock<std::mutex> lock(m_infoMutex);
    m_infoArrived.wait_for(lock, kInfoDeadline, [this] { return m_infoReady; });
    return m_totalSize;
}

bool CBackup::Stop() {
    return ps_killAllProcess("HandsetArchiver") && ps_killAllProcess("AppleMobileBackup");
}

void CBackup::ParseInfo(const std::string& text) {
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.find("Total") == std::string::npos) continue;
        const std::size_t last = line.rfind(' ');
        if (last == std::string::npos) return;
        line.erase(last);
        const std::size_t before = line.rfind(' ');
        if (before == std::string::npos) return;
        const long long size = std::stoll(line.substr(before + 1));
        const std::lock_guard<std::mutex> lock(m_infoMutex);
        m_totalSize = size;
        return;
    }
}

std::string CBackup::Rename(const std::string& folder, const std::string& udid, int /*unused*/) {
    const std::string temporary = folder + kTemporary + "\\";
    std::string result = FreeName(folder + udid);
    STD_FILE_RenameDirA(temporary + udid, result);
    // What is still there could not be moved, or not whole: there is no other one.
    if (!STD_PATH_ExistA(temporary + udid)) STD_FILE_DeleteDirA(temporary);
    return result;
}

void CBackup::RunBackup(const std::string& udid, const std::string& folder, const std::string& temporary,
                        CSyncCallBack* callback) {
    m_stop = false;
    CMobileBackupTask task;
    task.m_model = 0;
    const int code = task.StartFullBackup(temporary, udid, this, nullptr);
    if (callback == nullptr || m_stop) return;
    std::string path;
    if (code == kRunnerOk) path = Rename(STD_ToUtf8A(folder), STD_ToUtf8A(udid));
    SendEvent(callback, code == kRunnerOk ? kSyncEventBackupDone : kSyncEventBackupFailed, 0,
              AsArgument(code), path.data());
}

void CBackup::RunRestore(const std::string& udid, const std::string& folder, CSyncCallBack* callback) {
    m_stop = false;
    CMobileBackupTask task;
    task.m_model = 0;
    const int code = task.StartSourceRestore(folder, udid, this, nullptr);
    if (callback == nullptr || m_stop) return;
    SendEvent(callback, code == kRunnerOk ? kSyncEventRestoreDone : kSyncEventRestoreFailed, 0,
              AsArgument(code), nullptr);
}

void CBackup::RunStop(CSyncCallBack* callback) {
    Stop();
    ps_sleep(kAfterStopMs);
    m_stop = true;
    SendEvent(callback, kSyncEventOther, 0, 0, nullptr);
}
