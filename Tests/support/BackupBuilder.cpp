#include "Tests/support/BackupBuilder.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <plist/plist.h>
#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

namespace fs = std::filesystem;

namespace {

class Sqlite {
 public:
    explicit Sqlite(const std::string& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &m_handle), SQLITE_OK) << path;
    }
    ~Sqlite() { sqlite3_close(m_handle); }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    void Run(const std::string& statement) const {
        EXPECT_EQ(sqlite3_exec(m_handle, statement.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << statement << ": " << sqlite3_errmsg(m_handle);
    }

    void Insert(const std::string& fileID, const std::string& domain, const std::string& path, int flags,
                const std::string& description) const {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_handle, "INSERT INTO Files VALUES (?, ?, ?, ?, ?)", -1, &statement, nullptr);
        int column = 1;
        for (const std::string* text : {&fileID, &domain, &path}) {
            sqlite3_bind_text(statement, column++, text->data(), static_cast<int>(text->size()),
                              SQLITE_STATIC);
        }
        sqlite3_bind_int(statement, column++, flags);
        sqlite3_bind_blob(statement, column, description.data(), static_cast<int>(description.size()),
                          SQLITE_STATIC);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE) << sqlite3_errmsg(m_handle);
        sqlite3_finalize(statement);
    }

 private:
    sqlite3* m_handle = nullptr;
};

std::string BigEndian(unsigned long long value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text.push_back(static_cast<char>(value >> (8 * i)));
    return text;
}

std::string Counted(const std::string& text) {
    return text.empty() ? std::string("\xFF\xFF") : BigEndian(text.size(), 2) + text;
}

unsigned ModeOf(bool isFile) {
    return isFile ? 0100644 : 040755;
}

/// The list as bytes; it is freed.
std::string Binary(plist_t list) {
    char* bytes = nullptr;
    std::uint32_t count = 0;
    plist_to_bin(list, &bytes, &count);
    plist_free(list);
    const std::unique_ptr<char, void (*)(char*)> owned(bytes, &plist_to_bin_free);
    return {bytes, count};
}

}  // namespace

std::string BackupBuilder::FileID(const std::string& domain, const std::string& path) {
    const std::string text = domain + "-" + path;
    unsigned char digest[20];
    unsigned length = sizeof digest;
    EVP_Digest(text.data(), text.size(), digest, &length, EVP_sha1(), nullptr);
    std::string hex;
    for (const unsigned byte : digest) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", byte);
        hex += two;
    }
    return hex;
}

std::string BackupBuilder::Add(const std::string& domain, const std::string& path,
                               const std::string& content) {
    m_rows.push_back({domain, path, true, content.size()});
    std::string fileID = FileID(domain, path);
    m_files[fileID] = content;
    return fileID;
}

std::string BackupBuilder::AddDatabase(const std::string& domain, const std::string& path,
                                       const std::vector<std::string>& statements) {
    return Add(domain, path, DatabaseContent(statements));
}

std::string BackupBuilder::AddRow(const std::string& domain, const std::string& path) {
    m_rows.push_back({domain, path, false, 0});
    return FileID(domain, path);
}

void BackupBuilder::AddStray(const std::string& name, const std::string& content) {
    m_strays[name] = content;
}

std::string BackupBuilder::FileDescription(std::size_t bytes, unsigned mode) {
    plist_t const file = plist_new_dict();
    plist_dict_set_item(file, "Size", plist_new_uint(bytes));
    plist_dict_set_item(file, "Mode", plist_new_uint(mode));
    plist_t const objects = plist_new_array();
    plist_array_append_item(objects, plist_new_string("$null"));
    plist_array_append_item(objects, file);
    plist_t const top = plist_new_dict();
    plist_dict_set_item(top, "root", plist_new_uid(1));
    plist_t const archive = plist_new_dict();
    plist_dict_set_item(archive, "$top", top);
    plist_dict_set_item(archive, "$objects", objects);
    return Binary(archive);
}

std::string BackupBuilder::Status(const std::string& state) {
    plist_t const status = plist_new_dict();
    plist_dict_set_item(status, "IsFullBackup", plist_new_bool(1));
    plist_dict_set_item(status, "SnapshotState", plist_new_string(state.c_str()));
    return Binary(status);
}

std::string BackupBuilder::Write(Layout layout) {
    const std::string name = "backup" + std::to_string(++m_written) + "/";
    for (const auto& [fileID, content] : m_files)
        m_folder.Write(name + PathOf(layout, fileID), content);
    for (const auto& [path, content] : m_strays)
        m_folder.Write(name + path, content);
    m_folder.Write(name + "Info.plist", "<plist/>");
    if (layout == Layout::kNew) {
        WriteManifestDb(m_folder.Path(name + "Manifest.db"));
    } else {
        m_folder.Write(name + "Manifest.mbdb", ManifestMbdb());
    }
    return m_folder.Path(name);
}

std::string BackupBuilder::PathOf(Layout layout, const std::string& fileID) {
    return layout == Layout::kNew ? fileID.substr(0, 2) + "/" + fileID : fileID;
}

std::string BackupBuilder::DatabaseContent(const std::vector<std::string>& statements) {
    const TemporaryFolder folder;
    {
        const Sqlite database(folder.Path("db"));
        for (const std::string& statement : statements)
            database.Run(statement);
    }
    return folder.Read("db");
}

void BackupBuilder::WriteManifestDb(const std::string& path) const {
    const Sqlite manifest(path);
    manifest.Run(
        "CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER, file "
        "BLOB)");
    manifest.Run("BEGIN");
    for (const Row& row : m_rows) {
        manifest.Insert(FileID(row.domain, row.path), row.domain, row.path, row.isFile ? 1 : 2,
                        FileDescription(row.bytes, ModeOf(row.isFile)));
    }
    manifest.Run("COMMIT");
    for (const std::string& statement : m_manifestStatements)
        manifest.Run(statement);
}

std::string BackupBuilder::ManifestMbdb() const {
    std::string bytes("mbdb\x05\x00", 6);
    for (const Row& row : m_rows) {
        bytes += Counted(row.domain) + Counted(row.path) + Counted("") + Counted("") + Counted("");
        bytes += BigEndian(ModeOf(row.isFile), 2) + std::string(28, '\0') + BigEndian(row.bytes, 8) +
                 std::string(2, '\0');
    }
    return bytes;
}

std::set<std::string> FilesBelow(const std::string& folder) {
    std::set<std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) files.insert(fs::relative(entry.path(), folder).string());
    }
    return files;
}
