#include "Host/kruteinctl/FilesCommand.h"

#include <fmt/format.h>

#include "Host/BackupFormat/HashedFiles.h"
#include "Host/kruteinctl/BackupTarget.h"
#include "Host/kruteinctl/EntryText.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"

using krutein::BackupDamage;
using krutein::BackupEntry;
using krutein::HashedFile;
using krutein::HashedFiles;

namespace {

using Json = Printer::Json;

struct Totals {
    std::uint64_t entries = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t missing = 0;
};

/// The entries that the user wants to see.
class Filter {
 public:
    explicit Filter(const Options& options)
        : m_domain(LowerCase(options.domain)), m_path(LowerCase(options.path)) {}

    bool Takes(const BackupEntry& entry) const {
        return Has(entry.domain, m_domain) && Has(entry.path, m_path);
    }

 private:
    static bool Has(const std::string& text, const std::string& part) {
        return part.empty() || LowerCase(text).find(part) != std::string::npos;
    }

    std::string m_domain;
    std::string m_path;
};

bool IsOnDisk(const BackupEntry& entry, const HashedFiles& disk) {
    const HashedFile* const file = entry.id ? disk.Find(*entry.id) : nullptr;
    return file != nullptr && file->kind == HashedFile::Kind::kFile;
}

/// A narrower terminal gets the name on a line of its own, as names can be long and file IDs always are.
constexpr std::size_t kColumnsForNames = 110;

std::string Row(const Style& style, const std::string& id, const std::string& mode, const std::string& bytes,
                const std::string& disk, const std::string& name) {
    const bool isNarrow = style.columns != 0 && style.columns < kColumnsForNames;
    return fmt::format("{:40}  {:10}  {:>12}  {:4}{}{}", id, mode, bytes, disk, isNarrow ? "\n  " : "  ",
                       name);
}

std::string HeaderLine(const Style& style) {
    return Row(style, "FILE ID", "MODE", "BYTES", "DISK", "NAME");
}

std::string LineOf(const Style& style, const BackupEntry& entry, bool onDisk) {
    const bool isFile = entry.kind == BackupEntry::Kind::kFile;
    const char* const there = onDisk ? "yes" : "no";
    return Row(style, Printable(entry.fileId), ModeText(entry),
               entry.bytes && isFile ? std::to_string(*entry.bytes) : "-", isFile ? there : "-",
               NameOf(entry));
}

Json ObjectOf(const BackupEntry& entry, bool onDisk) {
    Json object = Printer::Message("file");
    object["file_id"] = entry.fileId;
    object["domain"] = entry.domain;
    object["path"] = entry.path;
    object["kind"] = WordOf(entry.kind);
    if (entry.bytes) object["bytes"] = *entry.bytes;
    if (entry.mode != 0) object["mode"] = entry.mode;
    if (entry.kind == BackupEntry::Kind::kFile) object["on_disk"] = onDisk;
    return object;
}

void Count(const BackupEntry& entry, bool onDisk, Totals& totals) {
    ++totals.entries;
    if (entry.kind != BackupEntry::Kind::kFile) return;
    ++totals.files;
    totals.bytes += entry.bytes.value_or(0);
    if (!onDisk) ++totals.missing;
}

void PrintTotals(const std::string& catalogue, const Totals& totals, Printer& printer) {
    printer.Print(
        [&] {
            return fmt::format("entries: {}, files: {} ({}), not on disk: {}", totals.entries, totals.files,
                               ExactBytes(totals.bytes), totals.missing);
        },
        [&] {
            Json summary = Printer::Message("summary");
            summary["command"] = NameOf(CommandName::kFiles);
            summary["path"] = catalogue;
            summary["entries"] = totals.entries;
            summary["files"] = totals.files;
            summary["bytes"] = totals.bytes;
            summary["missing"] = totals.missing;
            return summary;
        });
}

/// Files that are there but not seen would be told as missing.
void CheckReadable(const HashedFiles& disk) {
    if (disk.Unreadable().empty()) return;
    throw Failure(ExitCode::kFailed, "cannot read " + Printable(disk.Unreadable().front()));
}

}  // namespace

ExitCode RunFilesCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt) {
    const BackupTarget backup = FindTargetOrCatalogue(options.folder);
    backup.RequireFolder();
    const auto catalogue = backup.OpenCatalogue(interrupt);
    const HashedFiles disk(backup.folder, backup.layout, HashedFiles::Where::kPlaces, interrupt);
    CheckReadable(disk);
    const Filter filter(options);
    Totals totals;
    std::uint64_t damaged = 0;
    const Style& style = printer.LineStyle();
    printer.PrintText(HeaderLine(style));
    for (BackupEntry entry; !printer.IsClosed() && catalogue->Next(entry);) {
        if (!entry.id) ++damaged;
        if (!filter.Takes(entry)) continue;
        const bool onDisk = IsOnDisk(entry, disk);
        printer.Print([&] { return LineOf(style, entry, onDisk); }, [&] { return ObjectOf(entry, onDisk); });
        Count(entry, onDisk, totals);
    }
    if (printer.IsClosed()) return ExitCode::kDone;
    if (damaged > 0) {
        throw BackupDamage(
            fmt::format("{} lists {} entries whose file ID is none", backup.catalogue, damaged));
    }
    PrintTotals(backup.catalogue, totals, printer);
    return ExitCode::kDone;
}
