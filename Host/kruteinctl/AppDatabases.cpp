#include "Host/kruteinctl/AppDatabases.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>

#include "Host/UniqueFd.h"
#include "Host/kruteinctl/Text.h"
#include "Module/BackupLib/BackupMgr.h"

using krutein::BackupEntry;
using krutein::FileId;
using krutein::HashedFile;
using krutein::SqliteFiles;
using krutein::SqliteRows;
using krutein::SqliteView;

namespace {

constexpr char kWal[] = "-wal";
constexpr char kJournal[] = "-journal";

constexpr char kHomeDomain[] = "HomeDomain";
constexpr char kContacts[] = "Library/AddressBook/AddressBook.sqlitedb";
constexpr char kContactImages[] = "Library/AddressBook/AddressBookImages.sqlitedb";

/// WeChat has a database for each account, somewhere in its folders.
constexpr char kWechatEnd[] = "mm.sqlite";

constexpr char kChatTables[] =
    "SELECT name FROM sqlite_master WHERE type = 'table' AND name LIKE 'chat|_%' ESCAPE '|'";

constexpr char kDatabaseHeader[] = "SQLite format 3";

const App* AppOf(int bit) {
    for (const App& app : Apps()) {
        if (app.bit == bit) return &app;
    }
    return nullptr;
}

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// The app whose database a file is; null for other files.
const App* AppOfDatabase(const FileId& id, const std::string& path) {
    static const FileId messages = *FileId::Parse(kSMSFileID);
    static const FileId whatsapp = *FileId::Parse(kWhatsappFileID);
    static const FileId contacts = FileId::Of(kHomeDomain, kContacts);
    static const FileId images = FileId::Of(kHomeDomain, kContactImages);
    if (id == messages) return AppOf(kBackupTypeSms);
    if (id == whatsapp) return AppOf(kBackupTypeWhatsApp);
    if (id == contacts || id == images) return AppOf(kBackupTypeContact);
    return EndsWith(LowerCase(path), kWechatEnd) ? AppOf(kBackupTypeWeChat) : nullptr;
}

bool HasContent(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && info.st_size > 0;
}

bool HasDatabaseHeader(const std::string& path) {
    const krutein::UniqueFd file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    char begin[sizeof kDatabaseHeader] = {};
    // One that cannot be read gives its reason when it is opened as a database.
    if (!file.IsOpen()) return true;
    return read(file.Get(), begin, sizeof begin) == sizeof begin &&
           std::memcmp(begin, kDatabaseHeader, sizeof begin) == 0;
}

std::string Quoted(const std::string& name) {
    std::string quoted = "\"";
    for (const char c : name)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

std::int64_t CountRows(const SqliteView& database, const std::string& table) {
    return database.Number("SELECT count(*) FROM " + Quoted(table));
}

void CountTable(const SqliteView& database, const char* table, const char* word, DatabaseFacts& facts) {
    if (database.HasTable(table)) facts.counts.emplace_back(word, CountRows(database, table));
}

/// Each chat is a table of its own.
void CountWechat(const SqliteView& database, DatabaseFacts& facts) {
    std::vector<std::string> tables;
    SqliteRows names = database.Select(kChatTables);
    while (names.Next())
        tables.emplace_back(names.Text(0));
    std::int64_t messages = 0;
    for (const std::string& table : tables)
        messages += CountRows(database, table);
    facts.counts.emplace_back("messages", messages);
    facts.counts.emplace_back("chats", static_cast<std::int64_t>(tables.size()));
}

void CountRecords(const App& app, const SqliteView& database, DatabaseFacts& facts) {
    switch (app.bit) {
        case kBackupTypeSms:
            CountTable(database, "message", "messages", facts);
            CountTable(database, "chat", "chats", facts);
            break;
        case kBackupTypeWhatsApp:
            CountTable(database, "ZWAMESSAGE", "messages", facts);
            CountTable(database, "ZWACHATSESSION", "chats", facts);
            break;
        case kBackupTypeWeChat:
            CountWechat(database, facts);
            break;
        default:
            CountTable(database, "ABPerson", "contacts", facts);
            CountTable(database, "ABFullSizeImage", "pictures", facts);
    }
}

}  // namespace

void AppDatabases::See(const BackupEntry& entry) {
    if (entry.kind != BackupEntry::Kind::kFile || !entry.id) return;
    for (const char* const log : {kWal, kJournal}) {
        if (!EndsWith(entry.path, log)) continue;
        const std::string path = PathOnDisk(entry);
        const std::string owner = entry.path.substr(0, entry.path.size() - std::strlen(log));
        if (path.empty() || !HasContent(path)) return;
        if (AppOfDatabase(FileId::Of(entry.domain, owner), owner) == nullptr) return;
        m_logs[{entry.domain, entry.path}] = path;
        return;
    }
    const App* const app = AppOfDatabase(*entry.id, entry.path);
    if (app == nullptr) return;
    const std::string path = PathOnDisk(entry);
    AppDatabase database{app, entry, std::nullopt};
    if (!path.empty()) database.files = SqliteFiles{path, "", ""};
    m_databases.push_back(std::move(database));
}

std::vector<AppDatabase> AppDatabases::Found() const {
    std::vector<AppDatabase> found = m_databases;
    const auto logOf = [this](const BackupEntry& entry, const char* log) {
        const auto known = m_logs.find({entry.domain, entry.path + log});
        return known == m_logs.end() ? std::string() : known->second;
    };
    for (AppDatabase& database : found) {
        if (!database.files) continue;
        database.files->wal = logOf(database.entry, kWal);
        database.files->journal = logOf(database.entry, kJournal);
    }
    return found;
}

/// \return "" when there is no file in its place.
std::string AppDatabases::PathOnDisk(const BackupEntry& entry) const {
    const HashedFile* const file = m_disk.Find(*entry.id);
    if (file == nullptr || file->kind != HashedFile::Kind::kFile) return {};
    return m_backup + "/" + m_disk.PathOf(*file);
}

DatabaseFacts FactsOf(const AppDatabase& database, const krutein::Interrupt& interrupt) {
    using State = DatabaseFacts::State;
    DatabaseFacts facts;
    if (!database.files) {
        facts.state = State::kMissing;
    } else if (!HasContent(database.files->database)) {
        facts.state = State::kEmpty;
    } else if (!HasDatabaseHeader(database.files->database)) {
        facts.state = State::kNoDatabase;
    } else {
        try {
            CountRecords(*database.app, SqliteView(*database.files, interrupt), facts);
        } catch (const krutein::BackupDamage& damage) {
            facts.state = State::kDamaged;
            facts.message = damage.what();
        }
    }
    return facts;
}

std::string IntegrityProblem(const AppDatabase& database, const krutein::Interrupt& interrupt) {
    try {
        const SqliteView view(*database.files, interrupt);
        const std::string answer = view.Text("PRAGMA integrity_check(1)");
        return answer == "ok" ? std::string() : answer;
    } catch (const krutein::BackupDamage& damage) {
        return damage.what();
    }
}
