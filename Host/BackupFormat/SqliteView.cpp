#include "Host/BackupFormat/SqliteView.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <system_error>

#include "Host/BackupFormat/SqliteUri.h"
#include "Host/UniqueFd.h"

namespace krutein {
namespace {

/// So many steps of its virtual machine SQLite does between two looks at the interrupt.
constexpr int kStepsBetweenLooks = 10'000;

/// A journal that names another one, which belongs to a change of several databases, ends with this.
constexpr std::array<unsigned char, 8> kJournalMagic = {0xD9, 0xD5, 0x05, 0xF9, 0x20, 0xA1, 0x63, 0xD7};

constexpr char kBeginReading[] =
    "PRAGMA trusted_schema = OFF;"
    "PRAGMA cell_size_check = ON;";

int LookAtInterrupt(void* interrupt) {
    return static_cast<const Interrupt*>(interrupt)->IsRaised() ? 1 : 0;
}

/// A log in the place where SQLite would look for it. \return "" when there is none with content.
std::string LogAt(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) return {};
    if (!S_ISREG(info.st_mode)) throw BackupDamage(path + " is no file");
    return info.st_size > 0 ? path : std::string();
}

/// SQLite deletes the journal that such a journal names when it finishes the change: any file of the user's.
bool NamesAnotherJournal(const std::string& journal) {
    const UniqueFd file(open(journal.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::array<unsigned char, kJournalMagic.size()> end{};
    const off_t at = lseek(file.Get(), -static_cast<off_t>(end.size()), SEEK_END);
    if (at < 0) return false;
    return pread(file.Get(), end.data(), end.size(), at) == static_cast<ssize_t>(end.size()) &&
           end == kJournalMagic;
}

}  // namespace

SqliteFiles SqliteFiles::At(const std::string& path) {
    return {path, LogAt(path + "-wal"), LogAt(path + "-journal")};
}

SqliteView::SqliteView(const SqliteFiles& files, const Interrupt& interrupt)
    : m_path(files.database), m_interrupt(interrupt) {
    struct stat info {};
    if (lstat(m_path.c_str(), &info) != 0) {
        if (errno == ENOENT) throw BackupDamage(m_path + " is missing");
        throw std::system_error(errno, std::generic_category(), "cannot read " + m_path);
    }
    if (!S_ISREG(info.st_mode)) throw BackupDamage(m_path + " is no file");
    const bool hasLogs = !files.wal.empty() || !files.journal.empty();
    if (hasLogs) {
        Open(SqliteUri(Copy(files)), SQLITE_OPEN_READWRITE);
    } else {
        // Immutable: SQLite takes the file as it is, with no look for logs.
        Open(SqliteUri(m_path) + "?mode=ro&immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_NOFOLLOW);
        CheckLength();
    }
}

SqliteRows SqliteView::Select(const std::string& sql) const {
    return SqliteRows(*this, sql);
}

std::int64_t SqliteView::Number(const std::string& sql) const {
    SqliteRows rows = Select(sql);
    if (!rows.Next()) throw BackupDamage(m_path + ": no answer to " + sql);
    return rows.Number(0);
}

std::string SqliteView::Text(const std::string& sql) const {
    SqliteRows rows = Select(sql);
    if (!rows.Next()) throw BackupDamage(m_path + ": no answer to " + sql);
    return std::string(rows.Text(0));
}

bool SqliteView::HasTable(const std::string& name) const {
    SqliteRows tables = Select("SELECT name FROM sqlite_master WHERE type = 'table'");
    while (tables.Next()) {
        if (sqlite3_stricmp(std::string(tables.Text(0)).c_str(), name.c_str()) == 0) return true;
    }
    return false;
}

void SqliteView::Open(const std::string& uri, int flags) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(uri.c_str(), &handle, flags | SQLITE_OPEN_URI, nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK) Throw(result);
    sqlite3_progress_handler(handle, kStepsBetweenLooks, LookAtInterrupt,
                             const_cast<Interrupt*>(&m_interrupt));
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    const int begun = sqlite3_exec(handle, kBeginReading, nullptr, nullptr, nullptr);
    if (begun != SQLITE_OK) Throw(begun);
}

std::string SqliteView::Copy(const SqliteFiles& files) {
    if (!files.journal.empty() && NamesAnotherJournal(files.journal)) {
        throw BackupDamage(files.journal + " belongs to an unfinished change of several databases");
    }
    m_scratch.emplace();
    std::string copy = m_scratch->Copy(files.database, "database");
    if (!files.wal.empty()) m_scratch->Copy(files.wal, "database-wal");
    if (!files.journal.empty()) m_scratch->Copy(files.journal, "database-journal");
    return copy;
}

/// SQLite notices a cut file only when it reads what is gone.
void SqliteView::CheckLength() const {
    struct stat info {};
    const std::int64_t bytes = Number("PRAGMA page_count") * Number("PRAGMA page_size");
    if (lstat(m_path.c_str(), &info) != 0 || info.st_size < bytes) {
        throw BackupDamage(m_path + " is shorter than it was written");
    }
}

void SqliteView::Throw(int result) const {
    sqlite3* const handle = m_handle.get();
    const std::string reason = handle == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(handle);
    const std::string message = m_path + ": " + reason;
    switch (result & 0xFF) {
        case SQLITE_INTERRUPT:
            throw Interrupt::Raised();
        case SQLITE_NOMEM:
        case SQLITE_FULL:
        case SQLITE_IOERR:
        case SQLITE_PERM:
        case SQLITE_CANTOPEN:
            throw std::runtime_error("cannot read " + message);
        default:
            throw BackupDamage(message);
    }
}

SqliteRows::SqliteRows(const SqliteView& view, const std::string& sql) : m_view(&view) {
    sqlite3_stmt* handle = nullptr;
    const int result = sqlite3_prepare_v2(view.m_handle.get(), sql.c_str(), -1, &handle, nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK) view.Throw(result);
}

bool SqliteRows::Next() {
    const int result = sqlite3_step(m_handle.get());
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) m_view->Throw(result);
    return false;
}

std::string_view SqliteRows::Text(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(m_handle.get(), column));
    if (text == nullptr) return {};
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column))};
}

std::string_view SqliteRows::Bytes(int column) const {
    if (sqlite3_column_type(m_handle.get(), column) != SQLITE_BLOB) return {};
    const void* const bytes = sqlite3_column_blob(m_handle.get(), column);
    if (bytes == nullptr) return {};
    return {static_cast<const char*>(bytes),
            static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column))};
}

std::int64_t SqliteRows::Number(int column) const {
    return sqlite3_column_int64(m_handle.get(), column);
}

}  // namespace krutein
