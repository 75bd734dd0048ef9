#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace krutein {

class Statement;

/// An SQLite database that is either written from nothing or only read. All functions throw ToolError, and
/// Stopped when the run is to stop while SQLite works.
///
/// A database is written without a journal: nothing is ever undone, since a database that was not finished is
/// removed as a whole.
class Database {
 public:
    /// Begins a new database in one transaction. The same rows in the same order give the same bytes.
    /// \param path  of the file, which must not exist; "" for one that is thrown away at the end.
    static Database Create(const std::string& path);

    /// Opens a file for reading that somebody else may have tampered with. Nothing is written next to it. Any
    /// error means kToolBackupDamaged.
    static Database OpenToRead(const std::string& path);

    ~Database();
    Database(Database&&) noexcept = default;
    Database& operator=(Database&&) = delete;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Runs statements that have no values and no results.
    void Execute(const std::string& sql);

    /// The database must outlive the statement.
    Statement Prepare(const std::string& sql);

    /// Commits and closes a new database. All its statements must be gone. \return its size in bytes.
    std::int64_t Finish();

 private:
    friend class Statement;
    struct CloseDatabase {
        void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    };

    Database(const std::string& path, bool writing, int flags, const std::string& name);
    [[noreturn]] void Throw(int result) const;
    std::int64_t Size();
    std::int64_t NumberOf(const std::string& sql);

    std::string m_path;
    bool m_writing;
    std::unique_ptr<sqlite3, CloseDatabase> m_handle;
};

/// A prepared statement.
class Statement {
 public:
    struct Blob {
        std::string_view bytes;
    };

    /// Runs it once with these values, which fill its parameters from the first to the last.
    template <typename... Values>
    void Run(const Values&... values) {
        static_assert(!(std::is_pointer_v<std::decay_t<Values>> || ...), "texts are given as std::string");
        int index = 0;
        (Bind(++index, values), ...);
        while (Step()) {
        }
        Reset();
    }

    /// \return true when there is a row, false at the end.
    bool Step();

    // The columns of the row, from 0.
    std::int64_t Number(int column) const;
    bool IsText(int column) const;
    bool IsBlob(int column) const;
    /// Text or blob as bytes, "" for null; valid until the next step.
    std::string_view Bytes(int column) const;

 private:
    friend class Database;
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    Statement(const Database& database, const std::string& sql);
    void Bind(int index, std::int64_t value);
    void Bind(int index, const std::string& value);
    void Bind(int index, std::nullptr_t value);
    void Bind(int index, const Blob& value);
    void Reset();
    void Check(int result) const;

    const Database* m_database;
    std::unique_ptr<sqlite3_stmt, FinalizeStatement> m_handle;
};

}  // namespace krutein
