// The backup manager looks whether the kept app databases hold anything.

#include <cstring>
#include <memory>

#include "Common/log/Log.h"
#include "Common/std/std_path.h"
#include "Common/std/std_sha1.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/Database.h"
#include "Module/BackupLib/mbdb/mbdb.h"

namespace {

constexpr char kMessageCount[] = "select count(*) from message";
constexpr char kMessageJoinCount[] = "select count(*) from chat_message_join";
constexpr char kWechatChatTables[] =
    "select count(*) from sqlite_master where type ='table' and tbl_name like 'chat|_%' escape '|';";
constexpr char kWhatsappMessageCount[] = "select count(*) from zwamessage";
constexpr char kWhatsappChatCount[] = "select count(*) from ZWACHATSESSION";
constexpr char kWechatDatabases[] = "select fileID from Files where relativePath like '%mm.sqlite'";

/// Of the file IDs of WeChat databases, of which there is one for each account.
constexpr std::size_t kMostIdBytes = std::size_t{1} << 20;

/// Characters of a file ID that name its folder in the newer layout.
constexpr std::size_t kFolderChars = 2;

bool IsEmpty(const char* text) {
    return text == nullptr || *text == '\0';
}

/// Two spellings of the whole name, unlike the newer catalogue's query, which takes any case and any
/// beginning.
bool IsWechatDatabase(const char* path) {
    const char* const name = std::strrchr(path, '/');
    return name != nullptr && (std::strcmp(name, "/mm.sqlite") == 0 || std::strcmp(name, "/MM.sqlite") == 0);
}

struct FreeCatalogue {
    void operator()(mbdb_t* mbdb) const { mbdb_free(mbdb); }
};

}  // namespace

bool CBackupMgr::CheckSelectiveBackupIsValid() {
    if (HasType(kBackupTypeSms) &&
        CheckApp(kSMSFileID, kMessageCount, kMessageJoinCount, "[Backup] sms valid")) {
        return true;
    }
    if (HasType(kBackupTypeWeChat) && CheckWechat()) return true;
    return HasType(kBackupTypeWhatsApp) &&
           CheckApp(kWhatsappFileID, kWhatsappMessageCount, kWhatsappChatCount, "[Backup] whatsapp valid");
}

bool CBackupMgr::CheckDataBaseHasRecord(std::string path, std::string query) {
    if (!STD_PATH_ExistA(path)) {
        KRUTEIN_LOG("[Backup] CheckDataBaseHasRecord db[%s] not exist", path.c_str());
        return false;
    }
    return IsExistRecordInDataBase(std::move(path), std::move(query));
}

bool CBackupMgr::IsExistRecordInDataBase(std::string path, std::string query) {
    krutein::Database database;
    if (!database.Open(path)) return false;
    krutein::Query count(database, query);
    return count.Next() && count.Int(0) > 0;
}

std::string CBackupMgr::GetDataBasePath(std::string fileID) {
    if (m_legacyManifest) return m_backupFolder + "/" + fileID;
    return m_backupFolder + "/" + fileID.substr(0, kFolderChars) + "/" + fileID;
}

void CBackupMgr::GetWechatFileIDs(std::vector<std::string>& ids) {
    if (m_legacyManifest) {
        GetWechatFileIDsIOS9(ids);
    } else {
        GetWechatFileIDsIOS10(ids);
    }
}

/// Both queries are always run.
bool CBackupMgr::CheckApp(const std::string& fileID, const char* firstQuery, const char* secondQuery,
                          const char* log) {
    const std::string path = GetDataBasePath(fileID);
    const bool first = CheckDataBaseHasRecord(path, firstQuery);
    const bool second = CheckDataBaseHasRecord(path, secondQuery);
    if (first && second) KRUTEIN_LOG("%s", log);
    return first && second;
}

bool CBackupMgr::CheckWechat() {
    std::vector<std::string> ids;
    GetWechatFileIDs(ids);
    for (const std::string& id : ids) {
        // The catalogue's texts must not lead to databases elsewhere.
        if (id.find('/') != std::string::npos) continue;
        if (!CheckDataBaseHasRecord(GetDataBasePath(id), kWechatChatTables)) continue;
        KRUTEIN_LOG("[Backup] wechat valid");
        return true;
    }
    return false;
}

void CBackupMgr::GetWechatFileIDsIOS9(std::vector<std::string>& ids) {
    const std::unique_ptr<mbdb_t, FreeCatalogue> manifest(mbdb_open(m_manifestPath.c_str()));
    if (manifest == nullptr) {
        KRUTEIN_LOG("[Backup] open mbdb fail!!![%s] ", m_manifestPath.c_str());
        return;
    }
    for (const mbdb_record_t* const record : manifest->records) {
        if (IsEmpty(record->domain) || IsEmpty(record->path) || !IsWechatDatabase(record->path)) continue;
        ids.push_back(STD_FILE_CalcDomainPathSha1A(record->domain, record->path));
    }
}

void CBackupMgr::GetWechatFileIDsIOS10(std::vector<std::string>& ids) {
    krutein::Database manifest;
    if (!manifest.Open(m_manifestPath)) return;
    krutein::Query query(manifest, kWechatDatabases);
    const std::size_t before = ids.size();
    std::size_t bytes = 0;
    while (query.Next() && bytes <= kMostIdBytes) {
        ids.push_back(query.Text(0));
        bytes += ids.back().size();
    }
    if (query.WasEnded() || bytes > kMostIdBytes) ids.resize(before);
}
