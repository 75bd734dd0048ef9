#include "Host/kruteinctl/VerifyCommand.h"

#include <fmt/format.h>

#include <chrono>

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
#include "Module/BackupLib/BackupType.h"

using krutein::BackupEntry;
using krutein::HashedFile;
using krutein::HashedFiles;

namespace {

using Json = Printer::Json;
using Kind = BackupEntry::Kind;
using Clock = std::chrono::steady_clock;

const char* WordsFor(HashedFile::Kind kind) {
    switch (kind) {
        case HashedFile::Kind::kFolder:
            return "a folder";
        case HashedFile::Kind::kLink:
            return "a link";
        default:
            return "something that is no file";
    }
}

/// Tells and counts what is wrong.
class ProblemList {
 public:
    explicit ProblemList(Printer& printer) : m_printer(printer) {}

    /// \param kind   a word for programs, see Docs/scripting.md.
    /// \param words  printable.
    void Tell(const char* kind, const std::string& words, Json object = Printer::Message("problem")) {
        ++m_count;
        m_printer.Print([&] { return words; },
                        [&] {
                            object["kind"] = kind;
                            object["message"] = words;
                            return object;
                        });
    }

    void TellOf(const BackupEntry& entry, const char* kind, const std::string& words) {
        Json object = Printer::Message("problem");
        object["file_id"] = entry.fileId;
        object["domain"] = entry.domain;
        object["path"] = entry.path;
        Tell(kind, fmt::format("{} ({}): {}", NameOf(entry), Printable(entry.fileId), words), object);
    }

    std::uint64_t Count() const { return m_count; }

 private:
    Printer& m_printer;
    std::uint64_t m_count = 0;
};

/// One backup while it is verified.
class Verification {
 public:
    Verification(const BackupTarget& backup, Printer& printer, const krutein::Interrupt& interrupt)
        : m_backup(backup),
          m_interrupt(interrupt),
          m_disk(backup.folder, backup.layout, HashedFiles::Where::kAnywhere, interrupt),
          m_databases(backup.folder, m_disk),
          m_listed(m_disk.All().size()),
          m_problems(printer) {}

    void Run() {
        CheckWhole();
        const auto catalogue = m_backup.OpenCatalogue(m_interrupt);
        if (m_backup.IsTyped()) m_needed.emplace(m_backup, m_backup.record->type, m_interrupt);
        for (BackupEntry entry; catalogue->Next(entry);)
            Check(entry);
        CheckAllListed();
        CheckDatabases();
    }

    std::uint64_t Problems() const { return m_problems.Count(); }
    std::uint64_t Files() const { return m_files; }
    std::uint64_t Bytes() const { return m_bytes; }
    std::uint64_t Databases() const { return m_checkedDatabases; }

 private:
    void CheckWhole() {
        if (!m_backup.damagedRecord.empty()) {
            m_problems.Tell("damaged_record",
                            fmt::format("the record {} is damaged: every file that the catalogue lists is "
                                        "taken for needed",
                                        Printable(m_backup.damagedRecord)));
        }
        if (!IsFinished(m_backup.folder)) {
            m_problems.Tell("unfinished",
                            "the backup is unfinished: its Status.plist does not say otherwise");
        }
        for (const std::string& place : m_disk.Unreadable())
            m_problems.Tell("unreadable", "cannot read " + Printable(place));
    }

    void Check(const BackupEntry& entry) {
        if (!entry.id) return m_problems.TellOf(entry, "bad_file_id", "this is no file ID");
        if (entry.kind == Kind::kUnknown) {
            return m_problems.TellOf(entry, "bad_entry", "it is neither file, folder nor link");
        }
        if (entry.kind != Kind::kFile) return;
        const HashedFile* const file = m_disk.Find(*entry.id);
        if (file != nullptr) m_listed[static_cast<std::size_t>(file - m_disk.All().data())] = true;
        if (m_needed && !m_needed->Has(entry)) {
            if (file == nullptr) return;
            return m_problems.TellOf(
                entry, "not_needed",
                "it is there although " + TypeWords(m_backup.record->type) + " do not need it");
        }
        CheckFile(entry, file);
    }

    void CheckFile(const BackupEntry& entry, const HashedFile* file) {
        if (file == nullptr) return m_problems.TellOf(entry, "missing", "it is missing");
        if (file->kind != HashedFile::Kind::kFile) {
            return m_problems.TellOf(entry, "no_file",
                                     fmt::format("{} is in its place", WordsFor(file->kind)));
        }
        ++m_files;
        m_bytes += file->bytes;
        m_databases.See(entry);
        if (!entry.bytes) return m_problems.TellOf(entry, "no_size", "the catalogue does not tell its size");
        if (*entry.bytes != file->bytes) {
            m_problems.TellOf(entry, "wrong_size",
                              fmt::format("it has {} bytes instead of {}", file->bytes, *entry.bytes));
        }
    }

    void CheckAllListed() {
        for (std::size_t i = 0; i < m_listed.size(); ++i) {
            const HashedFile& file = m_disk.All()[i];
            if (m_listed[i] || file.kind == HashedFile::Kind::kFolder) continue;
            Json object = Printer::Message("problem");
            object["file"] = m_disk.PathOf(file);
            m_problems.Tell(
                "unlisted",
                fmt::format("{}: no entry of the catalogue lists it", Printable(m_disk.PathOf(file))),
                object);
        }
    }

    void CheckDatabases() {
        for (const AppDatabase& database : m_databases.Found()) {
            ++m_checkedDatabases;
            const std::string found = IntegrityProblem(database, m_interrupt);
            if (found.empty()) continue;
            m_problems.TellOf(
                database.entry, "damaged_database",
                fmt::format("the database of {} is damaged: {}", database.app->word, Printable(found)));
        }
    }

    const BackupTarget& m_backup;
    const krutein::Interrupt& m_interrupt;
    const HashedFiles m_disk;
    AppDatabases m_databases;
    std::vector<bool> m_listed;  ///< for each of m_disk's files
    std::optional<NeededFiles> m_needed;
    ProblemList m_problems;
    std::uint64_t m_files = 0;
    std::uint64_t m_bytes = 0;
    std::uint64_t m_checkedDatabases = 0;
};

void PrintResult(const BackupTarget& backup, const Verification& done, Clock::duration elapsed,
                 Printer& printer) {
    const int type = backup.record ? backup.record->type : kBackupTypeFull;
    printer.Print(
        [&] {
            const std::string found = done.Problems() == 0
                                          ? Painted("nothing is wrong", Colour::kGood, printer.LineStyle())
                                          : Painted(fmt::format("problems: {}", done.Problems()),
                                                    Colour::kBad, printer.LineStyle());
            return fmt::format("{}\n  {}: {} files, {}, {} app databases; {}", Printable(backup.folder),
                               TypeWords(type), done.Files(), ExactBytes(done.Bytes()), done.Databases(),
                               found);
        },
        [&] {
            Json summary = Printer::Message("summary");
            summary["command"] = NameOf(CommandName::kVerify);
            summary["path"] = backup.folder;
            summary["types"] = TypeWords(type);
            summary["files"] = done.Files();
            summary["bytes"] = done.Bytes();
            summary["databases"] = done.Databases();
            summary["problems"] = done.Problems();
            summary["seconds"] = std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
            return summary;
        });
}

}  // namespace

ExitCode RunVerifyCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt) {
    const Clock::time_point start = Clock::now();
    const BackupTarget backup = FindTarget(options.folder);
    backup.RequireFolder();
    if (IsEncrypted(backup.folder)) throw Failure(ExitCode::kEncrypted, kEncryptedText);
    Verification verification(backup, printer, interrupt);
    verification.Run();
    PrintResult(backup, verification, Clock::now() - start, printer);
    return verification.Problems() == 0 ? ExitCode::kDone : ExitCode::kFailed;
}
