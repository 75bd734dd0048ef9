// The backup manager keeps the files of the wanted types and deletes all others.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <iterator>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Common/log/Log.h"
#include "Common/std/folder.h"
#include "Common/std/platform.h"
#include "Common/std/second_hand.h"
#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Common/std/std_sha1.h"
#include "Common/std/text.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/ConfigMgr.h"
#include "Module/BackupLib/Database.h"
#include "Module/BackupLib/mbdb/mbdb.h"

using krutein::text::LowerCase;
using krutein::text::ToLowerCase;

namespace {

/// The contacts' pictures: kept by every job for contacts.
constexpr char kContactImagesFileID[] = "cd6702cea29fe89cf280a76794405adb17f9a0ee";

/// Shorter names are those of the backup's own files: catalogues, Info.plist and the like.
constexpr std::size_t kLeastIdChars = 20;

/// File IDs of six million files. What has more is no catalogue, and memory is not endless.
constexpr std::size_t kMostIdBytes = std::size_t{240} * 1000 * 1000;

constexpr std::uint32_t kCacheMagic = 0xEEEEEEEE;
constexpr std::uint32_t kCacheEnd = 0xFFFFFFFF;

/// True when one of the texts, which are in lower case, occurs in the value.
bool OccursIn(const std::string& value, const std::vector<std::string>& texts) {
    if (value.empty()) return false;
    const std::string lower = LowerCase(value);
    return std::any_of(texts.begin(), texts.end(),
                       [&](const std::string& text) { return lower.find(text) != std::string::npos; });
}

std::string TextOf(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

/// Names to be deleted in one folder, which stays open as long as it is needed.
struct Doomed {
    std::shared_ptr<const krutein::OpenedFolder> folder;  ///< null when it could not be opened again
    std::shared_ptr<const krutein::FolderNames> names;
    std::vector<const char*> files;  ///< in `names`
    std::string path;                ///< of the folder
};

/// A name with a backslash is another path once it is normalised, perhaps that of a needed file, or one
/// outside: such a file or folder stays.
bool IsDeletable(const char* name) {
    return std::strchr(name, '\\') == nullptr;
}

/// Deletes files, on two threads, since that is what pruning takes its time for.
class Deletions {
 public:
    void Add(Doomed doomed) {
        std::vector<std::string>& failed = m_failed.emplace_back();
        if (doomed.files.size() < kFewFiles) {
            failed = Delete(doomed);
        } else {
            m_work.Do([&failed, doomed = std::move(doomed)] { failed = Delete(doomed); });
        }
    }

    /// Returns when all are deleted. \return the files that could not be, in the order in which they came.
    std::vector<std::string> Finish() {
        m_work.Finish();
        std::vector<std::string> all;
        for (std::vector<std::string>& failed : m_failed)
            std::move(failed.begin(), failed.end(), std::back_inserter(all));
        return all;
    }

 private:
    /// Handing so few to another thread takes longer than deleting them.
    static constexpr std::size_t kFewFiles = 16;

    static std::vector<std::string> Delete(const Doomed& doomed) {
        std::vector<std::string> failed;
        for (const char* const name : doomed.files) {
            if (doomed.folder == nullptr || !IsDeletable(name) || !doomed.folder->Remove(name))
                failed.push_back(doomed.path + "/" + name);
        }
        return failed;
    }

    std::deque<std::vector<std::string>> m_failed;  ///< one for each call; none of them ever moves
    krutein::SecondHand m_work;                     ///< last: its tasks use the others
};

/// Deletes what is not needed in a folder and below it, and decides on that in the order of a listing.
/// Nothing outside is touched, whatever names and links there are and whatever becomes a link meanwhile.
class Pruning {
 public:
    /// \param need  what is found is removed from it: each needed ID keeps one file, a second one goes.
    Pruning(std::string path, std::set<std::string>& need) : m_path(std::move(path)), m_need(need) {
        for (auto each = need.begin(); each != need.end(); ++each)
            m_index.emplace(*each, each);
    }

    void Prune() {
        if (m_root.Open(m_path, false)) Prune("");
        for (const std::string& file : m_deletions.Finish())
            KRUTEIN_LOG("[Backup] DeleteNoNeedFile fail file=%s!", file.c_str());
    }

    /// After Prune: removes the folders below that are empty, each before those in it.
    void RemoveEmptyFolders() const {
        krutein::OpenedFolder parent;
        for (const std::string& folder : m_folders) {
            const std::size_t slash = folder.rfind('/');
            const std::string name = folder.substr(slash + 1);  // npos + 1 is 0
            const std::string above = slash == std::string::npos ? "" : folder.substr(0, slash);
            if (IsDeletable(name.c_str()) && parent.OpenBelow(m_root, above)) {
                parent.RemoveFolder(name.c_str());
            }
        }
    }

 private:
    using Folder = std::shared_ptr<krutein::OpenedFolder>;
    using Names = std::shared_ptr<krutein::FolderNames>;

    /// \param below  the folder's path in the backup's.
    void Prune(const std::string& below) {
        Folder folder = Open(below);
        if (folder == nullptr) return;
        for (bool more = true; more;) {
            const Names names = std::make_shared<krutein::FolderNames>();
            more = folder->Read(*names, krutein::kNamesAtOnce);
            // The stream is closed while a folder in it is pruned: then it has to be read to its end.
            if (names->HasFolder()) folder->ReadAll(*names);
            more = more && !names->HasFolder();
            PruneNames(below, folder, names);
        }
    }

    /// \return null when it cannot be opened.
    Folder Open(const std::string& below) const {
        Folder folder = std::make_shared<krutein::OpenedFolder>();
        return folder->OpenBelow(m_root, below) ? folder : nullptr;
    }

    void PruneNames(const std::string& below, Folder& folder, const Names& names) {
        const std::string path = below.empty() ? m_path : m_path + "/" + below;
        std::vector<const char*> files;
        const auto deleteThem = [&] {
            if (files.empty()) return;
            if (folder == nullptr) folder = Open(below);
            m_deletions.Add({folder, names, std::exchange(files, {}), path});
        };
        for (const krutein::FolderNames::Entry& entry : names->Entries()) {
            const char* const name = names->NameOf(entry);
            if (entry.isFolder) {
                deleteThem();
                folder = nullptr;  // meanwhile: a deep tree must not use up the descriptors
                m_folders.push_back(below.empty() ? name : below + "/" + name);
                Prune(std::string(m_folders.back()));
            } else if (!IsKept(name)) {
                files.push_back(name);
                if (files.size() == kFilesAtOnce) deleteThem();
            }
        }
        deleteThem();
    }

    bool IsKept(const char* name) {
        m_name = name;
        if (m_name.size() < kLeastIdChars) return true;
        ToLowerCase(m_name);
        const auto found = m_index.find(m_name);
        if (found == m_index.end()) return false;
        const auto needed = found->second;
        m_index.erase(found);  // first, as its key is a view of the set's text
        m_need.erase(needed);
        return true;
    }

    /// Of one folder, deleted by one thread in one go.
    static constexpr std::size_t kFilesAtOnce = 500;

    std::string m_path;
    krutein::OpenedFolder m_root;  ///< open to the end: what its path leads to may change
    std::vector<std::string> m_folders;
    std::set<std::string>& m_need;
    /// Of hundreds of thousands of files each is looked up, which in the set itself would show.
    std::unordered_map<std::string_view, std::set<std::string>::iterator> m_index;
    std::string m_name;  ///< one buffer for all names
    Deletions m_deletions;
};

struct FreeCatalogue {
    void operator()(mbdb_t* mbdb) const { mbdb_free(mbdb); }
};

/// Writes little-endian numbers and texts.
class CacheWriter {
 public:
    explicit CacheWriter(FILE* file) : m_file(file) {}

    void Number32(std::uint32_t value) { Number(value, 4); }
    void Number16(std::size_t value) { Number(static_cast<std::uint32_t>(value), 2); }

    /// As many bytes of the text as its 16-bit length says.
    void Text(const std::string& text) {
        const std::size_t length = text.size() & 0xFFFFU;
        if (length > 0) std::fwrite(text.data(), 1, length, m_file);
    }

 private:
    void Number(std::uint32_t value, std::size_t bytes) {
        unsigned char little[4] = {};
        for (std::size_t i = 0; i < bytes; ++i)
            little[i] = static_cast<unsigned char>(value >> (8 * i));
        std::fwrite(little, 1, bytes, m_file);
    }

    FILE* m_file;
};

}  // namespace

int CBackupMgr::DeleteNotNeedFiles() {
    if (m_fullBackup) return kJobDone;
    std::set<std::string> need;
    if (const int failed = m_legacyManifest ? GetNeedFilesIOS9(need) : GetNeedFilesIOS10(need)) {
        KRUTEIN_LOG("[Backup] GetNeedFilesIOS9 fail ret =%d!\n", failed);
        return failed;
    }
    if (need.empty()) return kJobNothingNeeded;
    if (HasType(kBackupTypeContact)) need.insert(kContactImagesFileID);
    DeleteNoNeedFile(need);
    return kJobDone;
}

int CBackupMgr::GetNeedFilesIOS10(std::set<std::string>& need) {
    const std::string text = CConfigMgr::GetInstance()->GetSQL(m_typeNames);
    if (text.empty()) return kJobNoQuery;
    // A missing catalogue counts as an empty one, and is not made by looking for it.
    if (!STD_PATH_ExistA(m_manifestPath)) return kJobDone;
    krutein::Database manifest;
    if (!manifest.Open(m_manifestPath)) return kJobCannotOpenManifestDb;
    krutein::Query query(manifest, text);
    std::size_t bytes = 0;
    while (query.Next()) {
        std::string fileID = LowerCase(query.Text(0));
        bytes += fileID.size();
        if (bytes > kMostIdBytes) return kJobCannotOpenManifestDb;
        need.insert(std::move(fileID));
    }
    // Who prunes by a part of the needed files deletes the others.
    return query.WasEnded() ? kJobCannotOpenManifestDb : kJobDone;
}

int CBackupMgr::GetNeedFilesIOS9(std::set<std::string>& need) {
    std::vector<std::string> domains;
    std::vector<std::string> paths;
    if (!CConfigMgr::GetInstance()->GetAppDomainAndRelativePath(m_typeNames, domains, paths))
        return kJobNoDomains;
    const std::unique_ptr<mbdb_t, FreeCatalogue> manifest(mbdb_open(m_manifestPath.c_str()));
    if (manifest == nullptr) return kJobCannotOpenMbdb;
    for (const mbdb_record_t* const record : manifest->records) {
        const std::string domain = TextOf(record->domain);
        const std::string path = TextOf(record->path);
        if (!OccursIn(domain, domains) && !OccursIn(path, paths)) continue;
        const std::string fileID = STD_FILE_CalcDomainPathSha1A(domain, path);
        if (fileID.empty()) {
            KRUTEIN_LOG("[Backup] GetNeedFilesIOS9* 计算HASH失败[%s][%s]", domain.c_str(), path.c_str());
            continue;
        }
        m_manifestEntries[fileID] = {fileID, domain, path, 0};
        need.insert(fileID);
    }
    return kJobDone;
}

void CBackupMgr::DeleteNoNeedFile(std::set<std::string>& need) {
    Pruning pruning(m_backupFolder, need);
    pruning.Prune();
    if (!m_legacyManifest) pruning.RemoveEmptyFolders();
}

bool CBackupMgr::SaveIOS9HashCache(std::string path, std::map<std::string, ST_DB_FILE_INFO>& entries) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(STD_FILE_OpenA(std::move(path), "wb"), &std::fclose);
    if (file == nullptr) return false;
    CacheWriter writer(file.get());
    writer.Number32(kCacheMagic);
    writer.Number32(static_cast<std::uint32_t>(entries.size()));
    std::uint32_t index = 0;
    for (const auto& [fileID, entry] : entries) {
        writer.Number32(index++);
        writer.Number16(entry.fileID.size());
        writer.Number16(entry.domain.size());
        writer.Number16(entry.relativePath.size());
        writer.Text(entry.fileID);
        writer.Text(entry.domain);
        writer.Text(entry.relativePath);
    }
    writer.Number32(kCacheEnd);
    return true;
}
