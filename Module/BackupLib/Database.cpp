#include "Module/BackupLib/Database.h"

#include <sqlite3.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Common/std/std_file.h"
#include "Common/std/std_path.h"

namespace krutein {
namespace {

constexpr const char* kLogs[] = {"-wal", "-journal"};

/// The end of a journal that names another one, that of a change of several databases.
constexpr char kJournalMagic[] = "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7";
constexpr long kMagicBytes = sizeof kJournalMagic - 1;

bool HasContent(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0;
}

bool NamesAnotherJournal(const std::string& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    char end[kMagicBytes] = {};
    return file != nullptr && std::fseek(file.get(), -kMagicBytes, SEEK_END) == 0 &&
           std::fread(end, 1, sizeof end, file.get()) == sizeof end &&
           std::memcmp(end, kJournalMagic, sizeof end) == 0;
}

/// SQLite deletes the file that a journal names, which may be any of the user's: such a one is left out.
bool IsUsable(const std::string& log) {
    return HasContent(log) && !NamesAnotherJournal(log);
}

bool IsFolder(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

/// A path as part of a URI: what would end it or be decoded in it is written as %XX.
std::string UriPath(const std::string& path) {
    std::string uri;
    for (const char c : path) {
        if (c == '%') {
            uri += "%25";
        } else if (c == '?') {
            uri += "%3f";
        } else if (c == '#') {
            uri += "%23";
        } else {
            uri += c;
        }
    }
    return uri;
}

std::string TemporaryFolder() {
    const char* const parent = std::getenv("TMPDIR");
    std::string folder =
        std::string(parent == nullptr || *parent == '\0' ? "/tmp" : parent) + "/krutein-XXXXXX";
    return mkdtemp(folder.data()) == nullptr ? std::string() : folder;
}

}  // namespace

Database::~Database() {
    sqlite3_close(m_handle);
    if (m_copyFolder.empty()) return;
    std::vector<std::string> files;
    STD_FILE_GetDirFileListA(m_copyFolder, files, false);
    for (const std::string& file : files)
        unlink(file.c_str());
    rmdir(m_copyFolder.c_str());
}

bool Database::Open(const std::string& path) {
    if (IsFolder(path)) return false;
    const std::string copy = CopyWithLogs(path);
    // Immutable: nobody else changes it, so no lock, log or shared memory file is needed.
    const std::string uri = copy.empty() ? "file:" + UriPath(path) + "?immutable=1" : "file:" + UriPath(copy);
    const int access = copy.empty() ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    const int flags = access | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;  // one thread uses it
    return sqlite3_open_v2(uri.c_str(), &m_handle, flags, nullptr) == SQLITE_OK;
}

/// Copies a database that has logs with content beside it.
/// \return the copy's path; "" when there are none, or when it cannot be copied: then what is in the database
/// itself has to do.
std::string Database::CopyWithLogs(const std::string& path) {
    bool hasLogs = false;
    for (const char* const log : kLogs)
        hasLogs = hasLogs || IsUsable(path + log);
    if (!hasLogs) return {};
    m_copyFolder = TemporaryFolder();
    if (m_copyFolder.empty()) return {};
    std::string copy = m_copyFolder + "/copy";
    STD_FILE_CopyFileA(path, copy, true);
    for (const char* const log : kLogs) {
        if (IsUsable(path + log)) STD_FILE_CopyFileA(path + log, copy + log, true);
    }
    return copy;
}

Query::Query(const Database& database, const std::string& text) {
    sqlite3_prepare_v2(database.Handle(), text.c_str(), -1, &m_statement, nullptr);
}

Query::~Query() {
    sqlite3_finalize(m_statement);
}

bool Query::Next() {
    return m_statement != nullptr && sqlite3_step(m_statement) == SQLITE_ROW;
}

std::string Query::Text(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return text == nullptr ? std::string() : std::string(text);
}

int Query::Int(int column) const {
    return sqlite3_column_int(m_statement, column);
}

}  // namespace krutein
