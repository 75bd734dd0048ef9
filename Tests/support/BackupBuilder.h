#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Tests/support/TemporaryFolder.h"

/// The two layouts of a device backup.
enum class Layout {
    kNew,  ///< version 10 and later: files in folders, Manifest.db
    kOld   ///< version 9 and earlier: flat, Manifest.mbdb
};

/// Puts device backups together by hand. What it knows of file IDs and catalogues is its own, so that the
/// library can be held against it.
class BackupBuilder {
 public:
    /// The file ID, by OpenSSL.
    static std::string FileID(const std::string& domain, const std::string& path);

    /// A file with a row in the catalogue. \return its file ID.
    std::string Add(const std::string& domain, const std::string& path, const std::string& content = "x");
    /// The same with an SQLite database that the statements have made.
    std::string AddDatabase(const std::string& domain, const std::string& path,
                            const std::vector<std::string>& statements);
    /// A row without a file, as folders have.
    std::string AddRow(const std::string& domain, const std::string& path);
    /// A file without a row, by its path in the backup.
    void AddStray(const std::string& name, const std::string& content = "stray");
    /// Statements for the Manifest.db, after its rows.
    void ChangeManifest(const std::string& statement) { m_manifestStatements.push_back(statement); }

    /// What a Manifest.db says of a file of this size in the column "file".
    static std::string FileDescription(std::size_t bytes, unsigned mode = 0100644);
    /// The Status.plist of a backup that is in this state: "finished" or another.
    static std::string Status(const std::string& state);

    /// Writes the backup into a folder of its own. \return the folder.
    std::string Write(Layout layout);

    /// The path of a file in a backup.
    static std::string PathOf(Layout layout, const std::string& fileID);

    /// The content of an SQLite database that the statements make.
    static std::string DatabaseContent(const std::vector<std::string>& statements);

 private:
    struct Row {
        std::string domain;
        std::string path;
        bool isFile = false;
        std::size_t bytes = 0;
    };

    void WriteManifestDb(const std::string& path) const;
    std::string ManifestMbdb() const;

    TemporaryFolder m_folder;
    int m_written = 0;
    std::vector<Row> m_rows;
    std::map<std::string, std::string> m_files;   ///< content by file ID
    std::map<std::string, std::string> m_strays;  ///< content by path
    std::vector<std::string> m_manifestStatements;
};

/// The paths of all files below a folder, relative to it.
std::set<std::string> FilesBelow(const std::string& folder);
