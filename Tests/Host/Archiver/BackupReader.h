#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Looks into backups with other means than the tool's own.

using Row = std::vector<std::string>;

/// The rows of a query, each value as text; a failed test when the database cannot be read. Statements
/// without rows change the database.
std::vector<Row> Query(const std::string& database, const std::string& sql);

/// The only value of a query with one row.
std::string QueryOne(const std::string& database, const std::string& sql);

/// The entries of a property list's root dictionary as text, nested ones as "outer/inner"; a failed test when
/// it is none.
std::map<std::string, std::string> ReadPlist(const std::string& path);

/// What the object of a keyed archive says, with UIDs resolved; empty when it is none.
std::map<std::string, std::string> ReadArchive(const std::string& bytes);

/// A row of Manifest.db, or a record of Manifest.mbdb.
struct ListedEntry {
    std::string fileId;
    std::string domain;
    std::string path;
    int flags = 0;  ///< 1 for files, 2 for folders, 4 for links
    std::map<std::string, std::string>
        file;  ///< what the archive says; of records the same by the same names

    std::int64_t Size() const;
};

/// The catalogue of a backup with either layout, in its order.
std::vector<ListedEntry> ReadCatalogue(const std::string& backup);

/// Relative paths of all files below a folder with their contents.
std::map<std::string, std::string> ReadTree(const std::string& folder);
