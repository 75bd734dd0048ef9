// The query of a typed backup: whatever is configured, SQLite may be asked to prepare it; without quotes in
// the values it prepares, and selects the files that a plain search for the texts selects.

#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Common/ini/IniObj.h"
#include "Module/BackupLib/ConfigMgr.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

struct File {
    std::string domain;
    std::string relativePath;
};

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Handle = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

constexpr std::size_t kMaxSections = 8;

Statement Prepare(const Handle& database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database.get(), sql.c_str(), -1, &statement, nullptr);
    return Statement(statement);
}

Handle EmptyManifest() {
    sqlite3* database = nullptr;
    Require(sqlite3_open(":memory:", &database) == SQLITE_OK, "a database in memory can be made");
    Handle manifest(database);
    const char* const table =
        "CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER, file "
        "BLOB)";
    Require(sqlite3_exec(manifest.get(), table, nullptr, nullptr, nullptr) == SQLITE_OK,
            "a table can be made");
    return manifest;
}

void Fill(const Handle& manifest, const std::vector<File>& files) {
    sqlite3_exec(manifest.get(), "DELETE FROM Files", nullptr, nullptr, nullptr);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const Statement insert = Prepare(manifest, "INSERT INTO Files VALUES (?1, ?2, ?3, 1, NULL)");
        const std::string id = std::to_string(i);
        sqlite3_bind_text(insert.get(), 1, id.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert.get(), 2, files[i].domain.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert.get(), 3, files[i].relativePath.c_str(), -1, SQLITE_TRANSIENT);
        Require(sqlite3_step(insert.get()) == SQLITE_DONE, "a row can be inserted");
    }
}

std::set<std::string> Selected(const Statement& query) {
    std::set<std::string> ids;
    while (sqlite3_step(query.get()) == SQLITE_ROW)
        ids.insert(reinterpret_cast<const char*>(sqlite3_column_text(query.get(), 0)));
    return ids;
}

bool HoldsOne(const std::string& text, const std::vector<std::string>& wanted) {
    const std::string lower = AsciiLower(text);
    return std::any_of(wanted.begin(), wanted.end(), [&](const std::string& part) {
        return lower.find(AsciiLower(part)) != std::string::npos;
    });
}

std::set<std::string> Expected(const std::vector<File>& files, const std::vector<std::string>& domains,
                               const std::vector<std::string>& paths) {
    std::set<std::string> ids;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (HoldsOne(files[i].domain, domains) || HoldsOne(files[i].relativePath, paths))
            ids.insert(std::to_string(i));
    }
    return ids;
}

/// The configured values as the configuration keeps them: up to a NUL, and none that is empty.
struct Configured {
    std::vector<std::string> sections;
    std::vector<std::string> domains;
    std::vector<std::string> paths;

    void Add(const std::string& domain, const std::string& path) {
        const std::string section = "s" + std::to_string(sections.size());
        global_getVmConfig()->setIni_string(section, "domain", domain);
        global_getVmConfig()->setIni_string(section, "relativePath", path);
        sections.push_back(section);
        if (!domain.empty()) domains.push_back(domain);
        if (!path.empty()) paths.push_back(path);
    }

    bool All(bool (*holds)(const std::string&)) const {
        return std::all_of(domains.begin(), domains.end(), holds) &&
               std::all_of(paths.begin(), paths.end(), holds);
    }
};

bool HasNoQuote(const std::string& value) {
    return value.find('\'') == std::string::npos;
}

/// Neither a pattern of its own nor bytes that SQLite may take for other characters.
bool IsLiteral(const std::string& value) {
    return IsAsciiWithout(value, "'%_");
}

void Check(const Handle& manifest, const Configured& configured, const std::vector<File>& files) {
    const std::string sql = CConfigMgr::GetInstance()->GetSQL(configured.sections);
    Require(sql.empty() == (configured.domains.empty() && configured.paths.empty()),
            "there is a query when anything is configured");
    if (sql.empty()) return;
    const Statement query = Prepare(manifest, sql);
    Require(query != nullptr || !configured.All(HasNoQuote),
            "values without quotes make a query that prepares");
    if (query == nullptr || !configured.All(IsLiteral)) return;
    Require(Selected(query) == Expected(files, configured.domains, configured.paths),
            "the query selects the files whose domain or path holds a configured text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("vm_config.ini");
    static const bool loaded = global_getVmConfig()->load(file.Path());
    Require(loaded, "an empty configuration can be loaded");
    static const Handle manifest = EmptyManifest();
    FuzzInput input(data, size);
    std::vector<File> files = {{"HomeDomain", "Library/SMS/sms.db"}, {"CameraRollDomain", "Media/1.JPG"}};
    std::string domain = input.TextLine();
    const std::string path = input.TextLine();
    if (IsAsciiWithout(domain, "") && IsAsciiWithout(path, "")) files.push_back({domain, path});
    Fill(manifest, files);
    Configured configured;
    while (!input.IsEmpty() && configured.sections.size() < kMaxSections) {
        domain = input.TextLine();
        configured.Add(domain, input.TextLine());
    }
    Check(manifest, configured, files);
    return 0;
}
