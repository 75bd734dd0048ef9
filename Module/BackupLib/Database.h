#pragma once

#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace krutein {

/// A look into an SQLite database that leaves it, and the folder that it lies in, as they are: it is opened
/// for reading only, no lock is taken and no file made beside it. What a log beside it holds is seen all the
/// same: such a database is read from a temporary copy. Internal.
///
/// What a database holds may be meant to do harm: its views run without the functions that could, and a query
/// that does not come to an end is ended, see Query::WasEnded.
class Database {
 public:
    Database() = default;
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// \return false when the path cannot be opened: it is missing, unreadable or no file; also when it has a
    ///         log and no copy can be made. That it is no database at all shows in the first query only.
    bool Open(const std::string& path);

    sqlite3* Handle() const { return m_handle; }

 private:
    bool CopyWithLogs(const std::string& path);
    static int LookWhetherToEnd(void* database);

    sqlite3* m_handle = nullptr;
    long long m_looks = 0;  ///< of the query that runs
    long long m_mostLooks = 0;
    std::string m_copyFolder;

    friend class Query;
};

/// A query and its rows. Internal.
class Query {
 public:
    /// \param text  UTF-8; the first statement in it is taken.
    Query(Database& database, const std::string& text);
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    /// False when the text could not be prepared; then there are no rows.
    bool IsValid() const { return m_statement != nullptr; }

    /// Goes to the next row. \return false when there is none, also after an error.
    bool Next();

    /// True when the rows were not all: the query went on for too long, or the job was asked to stop while it
    /// went on for longer than any query of a real backup does.
    bool WasEnded() const { return m_ended; }

    /// A column of the row as text up to its first NUL; "" for null.
    std::string Text(int column) const;
    int Int(int column) const;

 private:
    sqlite3_stmt* m_statement = nullptr;
    bool m_ended = false;
};

}  // namespace krutein
