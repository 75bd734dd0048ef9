#include "Module/BackupLib/ConfigMgr.h"

#include <cstdlib>
#include <ctime>

#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Common/std/std_string.h"
#include "Common/std/text.h"

using krutein::text::LowerCase;

namespace {

constexpr char kFullBackupFolder[] = "Velmora_Full_Backup";
constexpr char kCacheFolder[] = "VelMora_backup_cache";

struct FolderWord {
    int bit;
    const char* word;
};

constexpr FolderWord kFolderWords[] = {{kBackupTypeWeChat, "Wechat"},
                                       {kBackupTypeWhatsApp, "WhatsApp"},
                                       {kBackupTypeSms, "SMS"},
                                       {kBackupTypeContact, "Contact"},
                                       {kBackupTypeICloud, "iCloud"}};

std::string ConfigPath() {
    std::string bundle = STD_PATH_GetExeDirA();
    STD_PATH_GetUpFolderA(bundle, bundle);
    STD_PATH_GetUpFolderA(bundle, bundle);
    return bundle + "\\Resources\\Config\\vm_config.ini";
}

std::string CacheRoot() {
    const char* const home = std::getenv("HOME");
    return std::string(home == nullptr ? "" : home) + "/" + kCacheFolder;
}

void AppendUnlessEmpty(std::vector<std::string>& list, std::string item) {
    if (!item.empty()) list.push_back(std::move(item));
}

/// "column like '%a%' or column like '%b%'". Built without the formatting buffer, which a long list would not
/// fit.
std::string LikeClause(const std::string& column, const std::vector<std::string>& texts) {
    std::string clause;
    for (const std::string& text : texts) {
        if (!clause.empty()) clause += " or ";
        clause.append(column).append(" like '%").append(text).append("%'");
    }
    return clause;
}

}  // namespace

CConfigMgr* CConfigMgr::GetInstance() {
    static CConfigMgr instance;
    return &instance;
}

CConfigMgr::CConfigMgr() {
    m_config.load(ConfigPath());
}

bool CConfigMgr::IsFullBackup(int type) {
    return type == kBackupTypeITunes || type == kBackupTypeFull;
}

std::string CConfigMgr::GetForderNameFromBackupType(int type) {
    if (IsFullBackup(type)) return kFullBackupFolder;
    std::vector<std::string> words;
    for (const FolderWord& word : kFolderWords) {
        if ((type & word.bit) != 0) words.emplace_back(word.word);
    }
    if (words.empty()) return STD_FormatA("UNKNOWN_%d", type);
    return STD_FormatA("Velmora_%s_Backup", STD_FormatVectorA(words, "_").c_str());
}

std::string CConfigMgr::GenerateBackupDir(int type, std::string root) {
    if (root.empty()) root = CacheRoot();
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::string path = root + "\\" + GetForderNameFromBackupType(type) + "\\" +
                       STD_FormatA("%04d_%02d_%02d__%02d_%02d_%02d", local.tm_year + 1900, local.tm_mon + 1,
                                   local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    STD_PATH_FormatA(path);
    STD_FILE_EnsureDirExistA(path);
    return path;
}

bool CConfigMgr::GetAppDomainAndRelativePath(const std::vector<std::string>& sections,
                                             std::vector<std::string>& domains,
                                             std::vector<std::string>& relativePaths) {
    for (const std::string& section : sections) {
        AppendUnlessEmpty(domains, LowerCase(m_config.getIni_string(section, "domain", "")));
        AppendUnlessEmpty(relativePaths, LowerCase(m_config.getIni_string(section, "relativePath", "")));
    }
    return !domains.empty() || !relativePaths.empty();
}

std::string CConfigMgr::GetSQL(const std::vector<std::string>& sections) {
    std::vector<std::string> domains;
    std::vector<std::string> relativePaths;
    if (!GetAppDomainAndRelativePath(sections, domains, relativePaths)) return {};
    const std::string byDomain = LikeClause("domain", domains);
    const std::string byPath = LikeClause("relativePath", relativePaths);
    // The blanks are part of the queries that hosts know.
    if (byDomain.empty()) return " select * from  files where  " + byPath + "   COLLATE NOCASE; ";
    if (byPath.empty()) return " select * from  files where " + byDomain + " COLLATE NOCASE; ";
    return " select * from  files where " + byDomain + " or  " + byPath + "   COLLATE NOCASE; ";
}

bool CConfigMgr::IsNeedCopyDirWhenFullRestore() {
    return m_needCopyDir;
}

CIniObj* global_getVmConfig() {
    return &CConfigMgr::GetInstance()->m_config;
}
