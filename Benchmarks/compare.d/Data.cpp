#include "Benchmarks/compare.d/Data.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Common/std/std_sha1.h"
#include "Module/BackupLib/BackupMgr.h"

namespace fs = std::filesystem;

namespace {

constexpr int kMessagesEvery = 100;
constexpr std::size_t kFileBytes = 1024;
constexpr std::size_t kBlobBytes = 300;

class Folder {
 public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "krutein-compare-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) std::abort();
        m_path = name;
    }
    ~Folder() {
        std::error_code ignored;
        if (getpid() == m_owner) fs::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& Path() const { return m_path; }

 private:
    std::string m_path;
    pid_t m_owner = getpid();
};

std::string BigEndian(unsigned long long value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text.push_back(static_cast<char>(value >> (8 * i)));
    return text;
}

std::string Counted(const std::string& text) {
    return BigEndian(text.size(), 2) + text;
}

void Check(int code, sqlite3* database) {
    if (code == SQLITE_OK || code == SQLITE_DONE) return;
    std::fprintf(stderr, "%s\n", sqlite3_errmsg(database));
    std::exit(1);
}

void Execute(const std::string& path, const std::string& statements) {
    sqlite3* database = nullptr;
    Check(sqlite3_open(path.c_str(), &database), database);
    Check(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), database);
    sqlite3_close(database);
}

void WriteFile(const std::string& path, const std::string& content) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file < 0 || write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
        std::perror(path.c_str());
        std::exit(1);
    }
    close(file);
}

}  // namespace

const std::string& DataFolder() {
    static const Folder folder;
    return folder.Path();
}

MadeFile FileNumber(int n) {
    const std::string number = std::to_string(n);
    if (n % kMessagesEvery == 0)
        return {"MediaDomain", "Library/SMS/Attachments/" + number + "/IMG_" + number + ".JPG"};
    return {"AppDomain-com.example.app" + std::to_string(n % 50),
            "Documents/folder" + std::to_string(n % 997) + "/a file with a usual name " + number + ".dat"};
}

std::vector<std::string> MakeTree(const std::string& folder, int files, bool flat) {
    fs::create_directories(folder);
    static constexpr char kHex[] = "0123456789abcdef";
    for (int i = 0; !flat && i < 256; ++i)
        fs::create_directory(folder + "/" + kHex[i / 16] + kHex[i % 16]);
    const std::string content(kFileBytes, 'x');
    std::vector<std::string> messages;
    for (int n = 0; n < files; ++n) {
        const MadeFile file = FileNumber(n);
        const std::string id = STD_FILE_CalcDomainPathSha1A(file.domain, file.path);
        WriteFile(folder + (flat ? "/" : "/" + id.substr(0, 2) + "/").append(id), content);
        if (n % kMessagesEvery == 0) messages.push_back(id);
    }
    return messages;
}

void MakeMbdb(const std::string& path, int records) {
    std::ofstream out(path, std::ios::binary);
    out << std::string("mbdb\x05\x00", 6);
    for (int n = 0; n < records; ++n) {
        const MadeFile file = FileNumber(n);
        out << Counted(file.domain) << Counted(file.path) << "\xFF\xFF" << Counted(std::string(20, 'h'))
            << "\xFF\xFF" << BigEndian(0x81A4, 2) << std::string(28, '\0') << BigEndian(kFileBytes, 8)
            << BigEndian(4, 1) << BigEndian(0, 1);
    }
}

void MakeManifestDb(const std::string& path, int rows) {
    sqlite3* database = nullptr;
    Check(sqlite3_open(path.c_str(), &database), database);
    Check(sqlite3_exec(
              database,
              "CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER, "
              "file BLOB); CREATE INDEX d ON Files(domain); BEGIN",
              nullptr, nullptr, nullptr),
          database);
    sqlite3_stmt* insert = nullptr;
    Check(sqlite3_prepare_v2(database, "INSERT INTO Files VALUES (?, ?, ?, 1, ?)", -1, &insert, nullptr),
          database);
    const std::string blob(kBlobBytes, 'b');
    for (int n = 0; n < rows; ++n) {
        const MadeFile file = FileNumber(n);
        const std::string id = STD_FILE_CalcDomainPathSha1A(file.domain, file.path);
        int column = 1;
        for (const std::string* text : {&id, &file.domain, &file.path})
            sqlite3_bind_text(insert, column++, text->data(), static_cast<int>(text->size()), SQLITE_STATIC);
        sqlite3_bind_blob(insert, column, blob.data(), static_cast<int>(blob.size()), SQLITE_STATIC);
        Check(sqlite3_step(insert), database);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    Check(sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr), database);
    sqlite3_close(database);
}

void MakeMessages(const std::string& backup) {
    Execute(backup + "/Manifest.db",
            "INSERT INTO Files VALUES ('" + kSMSFileID + "', 'HomeDomain', 'Library/SMS/sms.db', 1, NULL)");
    const std::string folder = backup + "/" + kSMSFileID.substr(0, 2);
    fs::create_directories(folder);
    Execute(folder + "/" + kSMSFileID,
            "CREATE TABLE message (a); INSERT INTO message VALUES (1);"
            "CREATE TABLE chat_message_join (a); INSERT INTO chat_message_join VALUES (1)");
}

void Settle() {
    sync();
}
