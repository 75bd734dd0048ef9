#include "Host/kruteinctl/ShowCommand.h"

#include <fmt/format.h>

#include "Host/BackupFormat/HashedFiles.h"
#include "Host/kruteinctl/AppDatabases.h"
#include "Host/kruteinctl/BackupTarget.h"
#include "Host/kruteinctl/Encryption.h"
#include "Host/kruteinctl/EntryText.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/NeededFiles.h"
#include "Host/kruteinctl/Status.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Types.h"

using krutein::BackupEntry;
using krutein::HashedFile;
using krutein::HashedFiles;

namespace {

using Json = Printer::Json;
using State = DatabaseFacts::State;

/// What a backup keeps of one app.
struct KeptApp {
    const App* app = nullptr;
    std::optional<NeededFiles> files;  ///< nothing when none are configured
    std::uint64_t count = 0;           ///< of those that are on disk
    std::uint64_t bytes = 0;
};

const char* WordOf(State state) {
    switch (state) {
        case State::kOk:
            return "ok";
        case State::kMissing:
            return "missing";
        case State::kEmpty:
            return "empty";
        case State::kNoDatabase:
            return "no_database";
        default:
            return "damaged";
    }
}

std::string TextOf(const Record& record) {
    std::string text = fmt::format("{} ({}), version {}\n", Printable(record.deviceName),
                                   Printable(record.productType), Printable(record.version));
    const auto line = [&text](const char* name, const std::string& value) {
        text += fmt::format("  {:8} {}\n", name, value);
    };
    line("device", Printable(record.deviceID));
    line("serial", Printable(record.serialNumber));
    line("types", TypeWords(record.type));
    line("time", Printable(HumanRecordTime(record.timeText)));
    line("size", HumanBytes(record.Bytes()));
    line("valid", record.isValid ? "yes" : "no");
    text.pop_back();
    return text;
}

Json ObjectOf(const Record& record) {
    Json object = Printer::Message("record");
    object["udid"] = record.deviceID;
    object["device_name"] = record.deviceName;
    object["product_type"] = record.productType;
    object["system_version"] = record.version;
    object["serial_number"] = record.serialNumber;
    object["types"] = TypeWords(record.type);
    object["type"] = record.type;
    object["time"] = record.timeText;
    object["bytes"] = record.Bytes();
    object["valid"] = record.isValid;
    return object;
}

void PrintRecord(const BackupTarget& backup, Printer& printer) {
    if (backup.record) {
        printer.Print([&] { return TextOf(*backup.record); }, [&] { return ObjectOf(*backup.record); });
    } else if (backup.damagedRecord.empty()) {
        printer.PrintText("no record");
    } else {
        printer.PrintText("the record is damaged: " + Printable(backup.damagedRecord));
    }
}

std::string CountsText(const DatabaseFacts& facts) {
    std::string text;
    for (const auto& [what, count] : facts.counts)
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, what);
    return text.empty() ? "none of its tables is there" : text;
}

std::string TextOf(const DatabaseFacts& facts) {
    switch (facts.state) {
        case State::kOk:
            return CountsText(facts);
        case State::kMissing:
            return "listed but not in the backup";
        case State::kEmpty:
            return "empty";
        case State::kNoDatabase:
            return "no database: encrypted or damaged";
        default:
            return "damaged: " + Printable(facts.message);
    }
}

Json ObjectOf(const AppDatabase& database, const DatabaseFacts& facts) {
    Json object = {{"file_id", database.entry.fileId},
                   {"domain", database.entry.domain},
                   {"path", database.entry.path},
                   {"state", WordOf(facts.state)}};
    if (!facts.message.empty()) object["message"] = facts.message;
    for (const auto& [what, count] : facts.counts)
        object[what] = count;
    return object;
}

/// Goes through the catalogue and shows what there is of each app.
class AppView {
 public:
    AppView(const BackupTarget& backup, const krutein::Interrupt& interrupt)
        : m_backup(backup),
          m_interrupt(interrupt),
          m_disk(backup.folder, backup.layout, HashedFiles::Where::kPlaces, interrupt),
          m_databases(backup.folder, m_disk) {}

    void Read() {
        const auto catalogue = m_backup.OpenCatalogue(m_interrupt);
        for (const App& app : Apps()) {
            if (!m_backup.IsTyped() || (m_backup.record->type & app.bit) != 0) AddApp(app);
        }
        for (BackupEntry entry; catalogue->Next(entry);)
            Take(entry);
    }

    void Print(Printer& printer) const {
        for (const KeptApp& kept : m_apps)
            Print(kept, printer);
    }

    std::uint64_t Files() const { return m_files; }
    std::uint64_t Bytes() const { return m_bytes; }

 private:
    void AddApp(const App& app) {
        KeptApp kept;
        kept.app = &app;
        try {
            kept.files.emplace(m_backup, app.bit, m_interrupt);
        } catch (const Failure& failure) {
            if (failure.Code() != ExitCode::kNotConfigured) throw;
        }
        m_apps.push_back(std::move(kept));
    }

    void Take(const BackupEntry& entry) {
        m_databases.See(entry);
        const HashedFile* const file =
            entry.kind == BackupEntry::Kind::kFile && entry.id ? m_disk.Find(*entry.id) : nullptr;
        if (file == nullptr || file->kind != HashedFile::Kind::kFile) return;
        ++m_files;
        m_bytes += file->bytes;
        for (KeptApp& kept : m_apps) {
            if (!kept.files || !kept.files->Has(entry)) continue;
            ++kept.count;
            kept.bytes += file->bytes;
        }
    }

    void Print(const KeptApp& kept, Printer& printer) const {
        std::string text = fmt::format("{:9} ", kept.app->word);
        text += kept.files ? fmt::format("{} files, {}", kept.count, HumanBytes(kept.bytes))
                           : "no files are configured for it";
        Json object = Printer::Message("app");
        object["app"] = kept.app->word;
        if (kept.files) {
            object["files"] = kept.count;
            object["bytes"] = kept.bytes;
        }
        object["databases"] = Json::array();
        for (const AppDatabase& database : m_databases.Found()) {
            if (database.app != kept.app) continue;
            const DatabaseFacts facts = FactsOf(database, m_interrupt);
            text += fmt::format("\n  {}: {}", NameOf(database.entry), TextOf(facts));
            object["databases"].push_back(ObjectOf(database, facts));
        }
        printer.Print([&] { return text; }, [&] { return object; });
    }

    const BackupTarget& m_backup;
    const krutein::Interrupt& m_interrupt;
    const HashedFiles m_disk;
    AppDatabases m_databases;
    std::vector<KeptApp> m_apps;
    std::uint64_t m_files = 0;
    std::uint64_t m_bytes = 0;
};

Json SummaryOf(const BackupTarget& backup) {
    Json summary = Printer::Message("summary");
    summary["command"] = NameOf(CommandName::kShow);
    if (!backup.folder.empty()) summary["path"] = backup.folder;
    summary["record"] = backup.record ? "ok" : backup.damagedRecord.empty() ? "none" : "damaged";
    return summary;
}

void ShowRecordOnly(const BackupTarget& backup, Printer& printer) {
    printer.Print(
        [&] { return fmt::format("no files: {} is not there", Printable(backup.record->BackupPath())); },
        [&] { return SummaryOf(backup); });
}

/// The record is all that can be told.
void ShowEncrypted(const BackupTarget& backup, Printer& printer) {
    printer.Print([] { return std::string(kEncryptedText); },
                  [&] {
                      Json summary = SummaryOf(backup);
                      summary["encrypted"] = true;
                      summary["finished"] = IsFinished(backup.folder);
                      return summary;
                  });
}

void ShowBackup(const BackupTarget& backup, Printer& printer, const krutein::Interrupt& interrupt) {
    AppView apps(backup, interrupt);
    apps.Read();
    apps.Print(printer);
    const bool finished = IsFinished(backup.folder);
    printer.Print(
        [&] {
            return fmt::format("{} files, {}{}, in\n  {}", apps.Files(), ExactBytes(apps.Bytes()),
                               finished ? "" : ", unfinished", Printable(backup.folder));
        },
        [&] {
            Json summary = SummaryOf(backup);
            summary["encrypted"] = false;
            summary["finished"] = finished;
            summary["files"] = apps.Files();
            summary["bytes"] = apps.Bytes();
            return summary;
        });
}

}  // namespace

ExitCode RunShowCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt) {
    const BackupTarget backup = FindTarget(options.folder);
    PrintRecord(backup, printer);
    if (backup.folder.empty()) {
        ShowRecordOnly(backup, printer);
    } else if (IsEncrypted(backup.folder)) {
        ShowEncrypted(backup, printer);
    } else {
        ShowBackup(backup, printer, interrupt);
    }
    return ExitCode::kDone;
}
