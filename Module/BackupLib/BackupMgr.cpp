#include "Module/BackupLib/BackupMgr.h"

#include <memory>

#include "Common/log/Log.h"
#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Common/std/std_string.h"
#include "Module/BackupLib/ConfigMgr.h"
#include "Module/BackupLib/JobState.h"
#include "Module/BackupLib/MobileBackupTask.h"

const std::string kWhatsappFileID = "7c7fba66680ef796b916b067077cc246adacf01d";
const std::string kSMSFileID = "3d0d7e5fb2ce288813306e4d4636395e047a3d28";

namespace {

constexpr int kNewestLegacyVersion = 9;

struct TypeName {
    int bit;
    const char* name;
};

constexpr TypeName kTypeNames[] = {{kBackupTypeWeChat, "backup_weChat"},
                                   {kBackupTypeWhatsApp, "backup_whatsApp"},
                                   {kBackupTypeSms, "backup_SMS"},
                                   {kBackupTypeContact, "backup_Contact"}};

}  // namespace

CBackupMgr* CBackupMgr::GetInstance() {
    static CBackupMgr instance;
    return &instance;
}

int CBackupMgr::StartBackupSafe(IBaseDevice* device, std::string& folder, CCallBack* callback, int type,
                                int option) {
    KRUTEIN_LOG("[Backup] begin ");
    if (!Enter()) return kJobAlreadyRunning;
    int result = kJobDone;
    {
        const auto leave = [](CBackupMgr* manager) { manager->Leave(); };  // also when the device throws
        const std::unique_ptr<CBackupMgr, decltype(leave)> job(this, leave);
        KillAppleBackupExe();
        m_manifestEntries.clear();
        m_typeNames.clear();
        m_protocolApps.clear();
        m_option = option;
        result = EndOf(StartBackup(device, folder, callback, type));
    }
    KRUTEIN_LOG("[Backup] end ret = %d ", result);
    return result;
}

int CBackupMgr::StartBackup(IBaseDevice* device, std::string& folder, CCallBack* callback, int type) {
    if (device == nullptr) return kJobNoDevice;
    const std::string deviceID = device->GetDeviceID();
    device->GetVersionString();  // some hosts' devices read all of their facts with this one
    if (deviceID.empty()) return kJobNoIdentifier;
    if (!CheckBackupType(type)) return kJobUnknownType;
    m_backupDir = CConfigMgr::GetInstance()->GenerateBackupDir(type, folder);
    if (!STD_PATH_ExistA(m_backupDir)) return kJobNoFolder;

    m_device = device;
    m_callBack = callback;
    m_type = type;
    m_deviceID = deviceID;
    const int version = device->GetMajorVersion();
    m_legacyManifest = version >= 0 && version <= kNewestLegacyVersion;
    if (version < 0) return kJobUnknownVersion;
    m_fullBackup = CConfigMgr::GetInstance()->IsFullBackup(type);

    const bool contactOnly = type == kBackupTypeContact;
    if (!contactOnly) {
        if (const int failed = DoNormalBackup()) return failed;
        if (!m_fullBackup && !CheckSelectiveBackupIsValid()) return kJobNoRecords;
    }
    return SaveBackup() ? kJobDone : kJobRecordNotWritten;
}

int CBackupMgr::StopBackup() {
    bool running = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        running = m_running;
        if (running) krutein::JobCancelled() = true;
    }
    if (!running) return KRUTEIN_LOG("[Backup] don't need cancle");
    KRUTEIN_LOG("[Backup] StopBackup* backup cancle...");
    return KillAppleBackupExe();
}

bool CBackupMgr::IsCancle() {
    return krutein::JobCancelled();
}

std::string CBackupMgr::GenerateCacheDir() {
    return CConfigMgr::GetInstance()->GenerateBackupDir(kBackupTypeCache, "");
}

bool CBackupMgr::DeleteFailBackupFiles() {
    STD_FILE_DeleteDirA(m_backupDir);
    return true;
}

int CBackupMgr::DoNormalBackup() {
    // Asked to stop before there was a tool to be ended: none is started.
    if (IsCancle()) return kJobCancelled;
    CMobileBackupTask task;
    task.m_model = m_option;
    const int result = task.StartFullBackup(m_backupDir, m_deviceID, m_callBack, nullptr);
    if (result != 0) {
        KRUTEIN_LOG("[Backup] backup fail ret=%d!", result);
        return result;
    }
    m_backupFolder = m_backupDir + "\\" + m_deviceID;
    m_manifestPath = m_backupFolder + (m_legacyManifest ? "/Manifest.mbdb" : "/Manifest.db");
    STD_PATH_FormatA(m_manifestPath);
    STD_PATH_FormatA(m_backupFolder);
    if (!STD_PATH_ExistA(m_manifestPath)) KRUTEIN_LOG("[Backup] manifestDB Can NOT Find!");
    return IsCancle() ? static_cast<int>(kJobCancelled) : DeleteNotNeedFiles();
}

bool CBackupMgr::CheckBackupType(int type) {
    if (CConfigMgr::GetInstance()->IsFullBackup(type)) {
        m_typeDesc = type == kBackupTypeITunes ? "backup_iTunes" : "backup_full";
        m_typeNames.push_back(m_typeDesc);
        return true;
    }
    for (const TypeName& part : kTypeNames) {
        if ((type & part.bit) != 0) m_typeNames.emplace_back(part.name);
    }
    if (m_typeNames.empty()) return false;
    m_typeDesc = STD_FormatVectorA(m_typeNames, ",");
    return true;
}

/// From idle to running. \return false when a job runs.
bool CBackupMgr::Enter() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_running) return false;
    krutein::JobCancelled() = false;
    m_running = true;
    return true;
}

void CBackupMgr::Leave() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    krutein::JobCancelled() = false;
    m_running = false;
}

/// What becomes of a job's result: a failure after a stop is the stop; after any other one no tool is left.
int CBackupMgr::EndOf(int result) {
    if (result == kJobDone) return result;
    if (IsCancle()) {
        KRUTEIN_LOG("[Backup] current task had been cancled");
        return kJobCancelled;
    }
    KillAppleBackupExe();
    return result;
}

void* cProc(void* /*unused*/) {
    KillAppleBackupExe();
    return nullptr;
}
