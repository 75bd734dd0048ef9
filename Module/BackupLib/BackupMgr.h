#pragma once

/// \file
/// Typed backups.

#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "Common/Export.h"
#include "Module/BackupLib/BackupType.h"
#include "Module/BackupLib/BaseDevice.h"
#include "Module/Sync/CallBack.h"

/// What the catalogue of an older backup says of one file.
struct ST_DB_FILE_INFO {
    std::string fileID;        ///< 40 hexadecimal characters, in lower case
    std::string domain;        ///< "HomeDomain"
    std::string relativePath;  ///< in the domain, "Library/SMS/sms.db"
    long long spare = 0;       ///< always 0
};

/// \{
/// File IDs of the databases with WhatsApp's chats and with the messages.
extern KRUTEIN_API const std::string kWhatsappFileID;
extern KRUTEIN_API const std::string kSMSFileID;
/// \}

/// How a job ended, besides the return codes of a run (RunnerCode and the tool's own). Never change.
enum JobResult : int {
    kJobDone = 0,                     ///< the backup is complete, and its record is written
    kJobNoDevice = 1,                 ///< the device pointer is null
    kJobNothingNeeded = 1000,         ///< the catalogue lists no file of the types
    kJobCannotOpenManifestDb = 1008,  ///< SQLite cannot open the catalogue
    kJobRecordNotWritten = 1009,      ///< backup_config.ini or the hash cache
    kJobNoFolder = 1013,              ///< the backup's folder could not be created
    kJobNoRecords = 1014,             ///< none of the apps' databases holds anything
    kJobCancelled = 1018,             ///< StopBackup was called
    kJobUnknownType = 1019,           ///< the type has no bit that is known
    kJobNoIdentifier = 1021,          ///< the device has no identifier
    kJobAlreadyRunning = 1022,        ///< there is one job at a time in a process
    kJobNoQuery = 1023,               ///< nothing is configured for the types
    kJobNoDomains = 1024,             ///< nothing is configured for the types
    kJobCannotOpenMbdb = 1025,        ///< missing, or no catalogue
    kJobUnknownVersion = 1026         ///< the device's major version is negative
};

/// Makes typed and full backups: runs the tool, keeps the files of the wanted types, checks that their
/// databases hold records, and writes the backup's record file.
///
/// A job runs on the caller's thread from start to end, one at a time. StopBackup and IsCancle may be called
/// from any thread; everything else belongs to the thread of the job. The results of the operations below
/// StartBackup depend on the job before them; hosts call StartBackupSafe, StopBackup, DeleteFailBackupFiles
/// and GenerateCacheDir.
class KRUTEIN_API CBackupMgr {
 public:
    /// The one manager, made by the first call; it lives as long as the process. May be called from any
    /// thread.
    static CBackupMgr* GetInstance();
    CBackupMgr(const CBackupMgr&) = delete;
    CBackupMgr& operator=(const CBackupMgr&) = delete;

    /// Makes a backup into a new folder below `folder` (see CConfigMgr::GenerateBackupDir): the device's
    /// backup in a folder named by its identifier, backup_config.ini beside it.
    /// \param device    not null; stays the caller's. Used until the job ends, and by the next call of
    /// SaveBackup.
    /// \param folder    UTF-8; "" for the cache folder. What holds for the texts of CMobileBackupTask holds
    /// for it.
    /// \param callback  receives the tool's progress as kCallBackBackup; may be null; stays the caller's.
    /// \param type      see BackupType.
    /// \param option    value of the tool's -model option.
    /// \return a JobResult, or the return code of the run. After a failure the partial folder stays.
    int StartBackupSafe(IBaseDevice* device, std::string& folder, CCallBack* callback, int type, int option);

    /// The job itself, without the guard against a second one. Called by StartBackupSafe.
    int StartBackup(IBaseDevice* device, std::string& folder, CCallBack* callback, int type);

    /// Asks the running job to stop, and ends its tool: it then returns kJobCancelled. A job whose files are
    /// being pruned goes on to its end. \return 0.
    int StopBackup();

    /// True once the running job has been asked to stop.
    bool IsCancle();

    /// Creates and returns a folder of the cache: that of the pseudo-type kBackupTypeCache.
    std::string GenerateCacheDir();

    /// Removes the folder of the last job that had one, with everything in it. Do not call it after
    /// kJobNoDevice, kJobUnknownType, kJobNoIdentifier and kJobAlreadyRunning: then it is another job's.
    /// \return true.
    bool DeleteFailBackupFiles();

    /// Runs the tool and prunes what it made. \return as StartBackupSafe.
    int DoNormalBackup();

    /// Takes the names of a type's parts. \return false when there are none.
    bool CheckBackupType(int type);

    /// Deletes what the job's types do not need; a full backup keeps everything. \return a JobResult.
    int DeleteNotNeedFiles();

    /// \{
    /// Add the file IDs that the job's types need, in lower case, from a Manifest.db or a Manifest.mbdb.
    /// \return 0, kJobCannotOpenManifestDb, kJobNoQuery; kJobCannotOpenMbdb, kJobNoDomains.
    int GetNeedFilesIOS10(std::set<std::string>& need);
    int GetNeedFilesIOS9(std::set<std::string>& need);
    /// \}

    /// Deletes the files of the backup that are not needed; names of less than 20 characters are kept. In the
    /// newer layout folders that became empty go too.
    /// \param need  file IDs; each that was found is removed from it.
    void DeleteNoNeedFile(std::set<std::string>& need);

    /// Writes the entries of an older backup's catalogue. Docs/formats.md ("Hash cache") describes the file.
    /// \return false when the file cannot be opened.
    bool SaveIOS9HashCache(std::string path, std::map<std::string, ST_DB_FILE_INFO>& entries);

    /// True when at least one of the job's apps has records in its database.
    bool CheckSelectiveBackupIsValid();

    /// \{
    /// True when the query of an existing database gives a row with a number above 0 in its first column.
    bool CheckDataBaseHasRecord(std::string path, std::string query);
    bool IsExistRecordInDataBase(std::string path, std::string query);
    /// \}

    /// Where the job's backup keeps a file.
    std::string GetDataBasePath(std::string fileID);

    /// Appends the file IDs of all databases of WeChat accounts.
    void GetWechatFileIDs(std::vector<std::string>& ids);

    /// Writes the job's backup_config.ini. \return false when it cannot be loaded or the hash cache not be
    /// written.
    bool SaveBackup();

 private:
    CBackupMgr() = default;

    bool Enter();
    void Leave();
    int EndOf(int result);
    bool HasType(int bit) const { return (m_type & bit) != 0; }
    bool CheckApp(const std::string& fileID, const char* firstQuery, const char* secondQuery,
                  const char* log);
    bool CheckWechat();
    void GetWechatFileIDsIOS9(std::vector<std::string>& ids);
    void GetWechatFileIDsIOS10(std::vector<std::string>& ids);

    std::string m_backupDir;  ///< of the job
    std::string m_deviceID;
    IBaseDevice* m_device = nullptr;
    CCallBack* m_callBack = nullptr;
    int m_type = 0;
    std::string m_manifestPath;
    std::string m_backupFolder;  ///< of the device, in m_backupDir
    std::mutex m_mutex;          ///< guards going from idle to running and to cancelled
    bool m_running = false;      ///< under m_mutex
    std::string m_typeDesc;
    bool m_legacyManifest = false;  ///< the older layout: flat, with a Manifest.mbdb
    bool m_fullBackup = false;
    std::map<std::string, ST_DB_FILE_INFO> m_manifestEntries;
    std::vector<std::string> m_typeNames;
    std::map<int, std::string> m_protocolApps;
    int m_option = 0;
};

/// Ends the backup tool; has the signature of a thread's entry. \return null.
KRUTEIN_API void* cProc(void* unused);
