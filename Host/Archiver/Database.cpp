#include "Host/Archiver/Database.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"
#include "Host/BackupFormat/SqliteUri.h"

namespace krutein {
namespace {

/// So many steps of its virtual machine SQLite does between two looks at the stop flag.
constexpr int kStepsBetweenLooks = 10'000;
/// No row of a catalogue comes near it.
constexpr int kMaxReadBytes = 1 << 20;

constexpr char kBeginWriting[] =
    "PRAGMA page_size = 4096;"
    "PRAGMA encoding = 'UTF-8';"
    "PRAGMA auto_vacuum = NONE;"
    "PRAGMA journal_mode = OFF;"
    "PRAGMA synchronous = OFF;"
    "PRAGMA locking_mode = EXCLUSIVE;"
    "PRAGMA cache_size = -16384;"  // KiB: enough that indexes of some 100,000 rows stay in memory
    "BEGIN;";

constexpr char kBeginReading[] =
    "PRAGMA trusted_schema = OFF;"
    "PRAGMA cell_size_check = ON;";

int LookAtStopFlag(void* /*unused*/) {
    return StopRequested() ? 1 : 0;
}

/// Has SQLite take the file as it is: no locks, no look for journals, nothing created.
std::string ImmutableUri(const std::string& path) {
    return SqliteUri(path) + "?immutable=1";
}

/// What the system said when SQLite's last call of it failed; 0 when none did.
int SystemError(sqlite3* handle) {
    int error = 0;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_LAST_ERRNO, &error);
    return error == 0 ? sqlite3_system_errno(handle) : error;
}

/// \param error  from SystemError.
ToolCode CodeOfWriting(int result, int error) {
    switch (result & 0xFF) {
        case SQLITE_FULL:
            return kToolDiskFull;
        case SQLITE_CANTOPEN:
        case SQLITE_READONLY:
        case SQLITE_PERM:
            return error == 0 ? kToolNotWritable : CodeOfErrno(error);
        case SQLITE_IOERR:
            return error == 0 ? kToolFailed : CodeOfErrno(error);
        default:
            return kToolFailed;
    }
}

}  // namespace

Database Database::Create(const std::string& path) {
    Database database(path, true, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, path);
    database.Execute(kBeginWriting);
    return database;
}

Database Database::OpenToRead(const std::string& path) {
    Database database(path, false, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, ImmutableUri(path));
    sqlite3* const handle = database.m_handle.get();
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kMaxReadBytes);
    database.Execute(kBeginReading);
    // SQLite notices a cut file only when it reads what is gone.
    struct stat info {};
    if (stat(path.c_str(), &info) != 0 || info.st_size != database.Size()) {
        throw ToolError(kToolBackupDamaged, path + " is not as long as it was written");
    }
    return database;
}

Database::Database(const std::string& path, bool writing, int flags, const std::string& name)
    : m_path(path), m_writing(writing) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &handle, flags, nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK) Throw(result);
    sqlite3_progress_handler(handle, kStepsBetweenLooks, LookAtStopFlag, nullptr);
}

Database::~Database() {
    if (m_handle == nullptr) return;
    m_handle.reset();
    if (m_writing && !m_path.empty()) unlink(m_path.c_str());
}

void Database::Execute(const std::string& sql) {
    const int result = sqlite3_exec(m_handle.get(), sql.c_str(), nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) Throw(result);
}

Statement Database::Prepare(const std::string& sql) {
    return Statement(*this, sql);
}

std::int64_t Database::Finish() {
    Execute("COMMIT");
    const std::int64_t size = Size();
    const int result = sqlite3_close(m_handle.get());
    if (result != SQLITE_OK) Throw(result);
    static_cast<void>(m_handle.release());
    return size;
}

std::int64_t Database::Size() {
    return NumberOf("PRAGMA page_count") * NumberOf("PRAGMA page_size");
}

std::int64_t Database::NumberOf(const std::string& sql) {
    Statement statement = Prepare(sql);
    statement.Step();
    return statement.Number(0);
}

void Database::Throw(int result) const {
    if ((result & 0xFF) == SQLITE_INTERRUPT) ThrowIfStopped();
    sqlite3* const handle = m_handle.get();
    const int error = handle == nullptr ? 0 : SystemError(handle);
    std::string reason = handle == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(handle);
    if (error != 0) reason += " (" + std::generic_category().message(error) + ")";
    const std::string name = m_path.empty() ? "a temporary database" : m_path;
    if (!m_writing) throw ToolError(kToolBackupDamaged, "cannot read " + name + ": " + reason);
    throw ToolError(CodeOfWriting(result, error), "cannot write " + name + ": " + reason);
}

Statement::Statement(const Database& database, const std::string& sql) : m_database(&database) {
    sqlite3_stmt* handle = nullptr;
    const int result = sqlite3_prepare_v2(database.m_handle.get(), sql.c_str(), -1, &handle, nullptr);
    m_handle.reset(handle);
    Check(result);
}

bool Statement::Step() {
    const int result = sqlite3_step(m_handle.get());
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) m_database->Throw(result);
    return false;
}

std::int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(m_handle.get(), column);
}

bool Statement::IsText(int column) const {
    return sqlite3_column_type(m_handle.get(), column) == SQLITE_TEXT;
}

bool Statement::IsBlob(int column) const {
    return sqlite3_column_type(m_handle.get(), column) == SQLITE_BLOB;
}

std::string_view Statement::Bytes(int column) const {
    const void* const bytes = sqlite3_column_blob(m_handle.get(), column);
    if (bytes == nullptr) return {};
    const int count = sqlite3_column_bytes(m_handle.get(), column);
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(count)};
}

void Statement::Bind(int index, std::int64_t value) {
    Check(sqlite3_bind_int64(m_handle.get(), index, value));
}

// Texts and blobs are not copied: they are the arguments of Run, which outlive the step.
void Statement::Bind(int index, const std::string& value) {
    Check(sqlite3_bind_text64(m_handle.get(), index, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::Bind(int index, std::nullptr_t /*value*/) {
    Check(sqlite3_bind_null(m_handle.get(), index));
}

void Statement::Bind(int index, const Blob& value) {
    Check(sqlite3_bind_blob64(m_handle.get(), index, value.bytes.data(), value.bytes.size(), SQLITE_STATIC));
}

void Statement::Reset() {
    Check(sqlite3_reset(m_handle.get()));
    Check(sqlite3_clear_bindings(m_handle.get()));
}

void Statement::Check(int result) const {
    if (result != SQLITE_OK) m_database->Throw(result);
}

}  // namespace krutein
