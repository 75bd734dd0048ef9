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
#include "Module/BackupLib/JobState.h"

namespace krutein {
namespace {

constexpr const char* kLogs[] = {"-wal", "-journal"};
constexpr char kCopyName[] = "/copy";

/// The end of a journal that names another one, that of a change of several databases.
constexpr char kJournalMagic[] = "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7";
constexpr long kMagicBytes = sizeof kJournalMagic - 1;

/// Steps of SQLite's machine between two looks whether a query has to end: less than a second.
constexpr int kStepsBetweenLooks = 10'000'000;
/// A query may take so many steps for each byte of the database, far more than comparing all texts of a row
/// with all that is looked for, and some looks more. What takes longer has no end.
constexpr long long kStepsPerByte = 20;
constexpr long long kLeastLooks = 5;

long long MostLooks(long long bytes) {
    return kLeastLooks + bytes / (kStepsBetweenLooks / kStepsPerByte);
}

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

/// Opening a pipe would wait for somebody to write into it.
bool IsFile(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

long long FileBytes(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? static_cast<long long>(info.st_size) : 0;
}

/// False when the copy is not whole, as on a full disk.
bool CopyWhole(const std::string& from, const std::string& to) {
    STD_FILE_CopyFileA(from, to, true);
    struct stat source {};
    struct stat copy {};
    return stat(from.c_str(), &source) == 0 && stat(to.c_str(), &copy) == 0 && source.st_size == copy.st_size;
}

/// A path as a URI: what would end it or be decoded in it is written as %XX.
std::string UriOf(const std::string& path) {
    // With an empty authority, so that a path that begins with "//" is not taken for one.
    std::string uri = !path.empty() && path.front() == '/' ? "file://" : "file:";
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
    if (!IsFile(path) || !CopyWithLogs(path)) return false;
    const std::string copy = m_copyFolder.empty() ? std::string() : m_copyFolder + kCopyName;
    // Immutable: nobody else changes it, so no lock, log or shared memory file is needed.
    const std::string uri = copy.empty() ? UriOf(path) + "?immutable=1" : UriOf(copy);
    const int access = copy.empty() ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    const int flags = access | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;  // one thread uses it
    if (sqlite3_open_v2(uri.c_str(), &m_handle, flags, nullptr) != SQLITE_OK) return false;
    m_mostLooks = MostLooks(FileBytes(copy.empty() ? path : copy));
    sqlite3_progress_handler(m_handle, kStepsBetweenLooks, LookWhetherToEnd, this);
    sqlite3_exec(m_handle, "PRAGMA trusted_schema = OFF", nullptr, nullptr, nullptr);
    return true;
}

int Database::LookWhetherToEnd(void* database) {
    auto* const self = static_cast<Database*>(database);
    return JobCancelled() || ++self->m_looks > self->m_mostLooks ? 1 : 0;
}

/// Copies a database that has logs with content beside it into m_copyFolder, which stays "" without them.
/// \return false when it has, and cannot be copied: what is in the database alone may be far from the truth.
bool Database::CopyWithLogs(const std::string& path) {
    bool hasLogs = false;
    for (const char* const log : kLogs)
        hasLogs = hasLogs || IsUsable(path + log);
    if (!hasLogs) return true;
    m_copyFolder = TemporaryFolder();
    if (m_copyFolder.empty()) return false;
    const std::string copy = m_copyFolder + kCopyName;
    bool whole = CopyWhole(path, copy);
    for (const char* const log : kLogs) {
        if (IsUsable(path + log)) whole = CopyWhole(path + log, copy + log) && whole;
    }
    return whole;
}

Query::Query(Database& database, const std::string& text) {
    database.m_looks = 0;
    sqlite3_prepare_v2(database.Handle(), text.c_str(), -1, &m_statement, nullptr);
}

Query::~Query() {
    sqlite3_finalize(m_statement);
}

bool Query::Next() {
    if (m_statement == nullptr) return false;
    const int result = sqlite3_step(m_statement);
    m_ended = m_ended || result == SQLITE_INTERRUPT;
    return result == SQLITE_ROW;
}

std::string Query::Text(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return text == nullptr ? std::string() : std::string(text);
}

int Query::Int(int column) const {
    return sqlite3_column_int(m_statement, column);
}

}  // namespace krutein
