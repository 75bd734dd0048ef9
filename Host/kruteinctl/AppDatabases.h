#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/BackupFormat/BackupCatalogue.h"
#include "Host/BackupFormat/HashedFiles.h"
#include "Host/BackupFormat/SqliteView.h"
#include "Host/kruteinctl/Apps.h"

/// A database in a backup that holds what an app is wanted for.
struct AppDatabase {
    const App* app = nullptr;
    krutein::BackupEntry entry;
    std::optional<krutein::SqliteFiles> files;  ///< nothing when the database is not on disk
};

/// Finds the apps' databases among a catalogue's entries. A backup keeps a database and its logs as files of
/// their own, under names that say nothing of each other.
class AppDatabases {
 public:
    /// \param backup  the backup's folder. \param disk  what lies in it; must outlive this object.
    AppDatabases(std::string backup, const krutein::HashedFiles& disk)
        : m_backup(std::move(backup)), m_disk(disk) {}

    /// To be called for each entry.
    void See(const krutein::BackupEntry& entry);

    /// In the order of the entries.
    std::vector<AppDatabase> Found() const;

 private:
    using Place = std::pair<std::string, std::string>;  ///< domain and path

    std::string PathOnDisk(const krutein::BackupEntry& entry) const;

    std::string m_backup;
    const krutein::HashedFiles& m_disk;
    std::vector<AppDatabase> m_databases;
    std::map<Place, std::string> m_logs;  ///< paths on disk of logs with content
};

/// What an app's database looks like inside.
struct DatabaseFacts {
    enum class State { kOk, kMissing, kEmpty, kNoDatabase, kDamaged };

    State state = State::kOk;
    std::string message;  ///< of a damaged one
    /// Numbers of records by what they are: "messages", "chats", "contacts". What has no table has none.
    std::vector<std::pair<std::string, std::int64_t>> counts;
};

/// Counts the records. Damage is a result. \throws std::runtime_error when the system does not let it be
/// read.
DatabaseFacts FactsOf(const AppDatabase& database, const krutein::Interrupt& interrupt);

/// What SQLite finds wrong with a database that is on disk; "" for nothing. Throws as FactsOf.
std::string IntegrityProblem(const AppDatabase& database, const krutein::Interrupt& interrupt);
