#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Host/BackupFormat/BackupDamage.h"
#include "Host/BackupFormat/Interrupt.h"
#include "Host/BackupFormat/ScratchFolder.h"

namespace krutein {

class SqliteRows;

/// A database and the logs that belong to it, wherever they lie; "" for a log that there is not.
struct SqliteFiles {
    std::string database;
    std::string wal;
    std::string journal;

    /// The usual: logs lie beside the database and are named for it. Those without content do not count.
    static SqliteFiles At(const std::string& path);
};

/// A look into a database that somebody may have tampered with. The database, and the folder that it lies in,
/// stay as they are: it is opened for reading only, no lock is taken and no file made. One with logs is read
/// from a temporary copy, in which SQLite may finish what the logs hold.
///
/// Damage, and everything that is no database, is BackupDamage; what the system refuses is
/// std::runtime_error. A raised Interrupt ends what SQLite is doing.
class SqliteView {
 public:
    /// No link is followed: neither in the path nor at its end.
    /// \param interrupt  must outlive the view.
    SqliteView(const SqliteFiles& files, const Interrupt& interrupt);

    /// The view must outlive the rows.
    SqliteRows Select(const std::string& sql) const;

    /// The first column of the first row. \throws BackupDamage when there is no row.
    std::int64_t Number(const std::string& sql) const;
    std::string Text(const std::string& sql) const;

    /// Whether there is a table of this name, whose case does not matter.
    bool HasTable(const std::string& name) const;

 private:
    friend class SqliteRows;
    struct CloseDatabase {
        void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    };

    void Open(const std::string& uri, int flags);
    std::string Copy(const SqliteFiles& files);
    void CheckLength() const;
    [[noreturn]] void Throw(int result) const;

    std::string m_path;  ///< of the database itself, for messages
    const Interrupt& m_interrupt;
    std::optional<ScratchFolder> m_scratch;
    std::unique_ptr<sqlite3, CloseDatabase> m_handle;
};

/// The rows that a query gives.
class SqliteRows {
 public:
    /// \return true when there is a row, false at the end.
    bool Next();

    // The columns of the row, from 0. Texts and bytes are valid until the next call of Next.
    std::string_view Text(int column) const;   ///< UTF-8, "" for null
    std::string_view Bytes(int column) const;  ///< of a blob; "" for anything else
    std::int64_t Number(int column) const;

 private:
    friend class SqliteView;
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    SqliteRows(const SqliteView& view, const std::string& sql);

    const SqliteView* m_view;
    std::unique_ptr<sqlite3_stmt, FinalizeStatement> m_handle;
};

}  // namespace krutein
