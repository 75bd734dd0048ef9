#include "Host/kruteinctl/DryRun.h"

#include <fmt/format.h>

#include "Host/BackupFormat/HashedFiles.h"
#include "Host/kruteinctl/BackupTarget.h"
#include "Host/kruteinctl/Backups.h"
#include "Host/kruteinctl/EntryText.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Folder.h"
#include "Host/kruteinctl/NeededFiles.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Types.h"
#include "Host/kruteinctl/Udid.h"
#include "Module/BackupLib/BackupType.h"

using krutein::BackupEntry;
using krutein::HashedFile;
using krutein::HashedFiles;

namespace {

using Json = Printer::Json;

struct Amount {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;

    void Add(const HashedFile& file) {
        ++files;
        bytes += file.bytes;
    }
};

/// The backup to look at, which must have everything in it.
BackupTarget FullBackup(const Options& options) {
    BackupTarget backup =
        FindTarget(FindBackup(CheckedFolder(options.folder), CanonicalUdid(options.udid)).Path());
    backup.RequireFolder();
    if (!backup.IsTyped()) return backup;
    throw Failure(ExitCode::kUsage,
                  fmt::format("{} holds {} only: what would be kept can be told from a full backup",
                              Printable(backup.folder), TypeWords(backup.record->type)));
}

void Tell(const BackupEntry& entry, const HashedFile& file, Printer& printer) {
    printer.Print([&] { return fmt::format("{:>12}  {}", file.bytes, NameOf(entry)); },
                  [&] {
                      Json object = Printer::Message("file");
                      object["file_id"] = entry.fileId;
                      object["domain"] = entry.domain;
                      object["path"] = entry.path;
                      object["bytes"] = file.bytes;
                      return object;
                  });
}

/// Tells each file that is kept. \return their amount.
Amount TellKept(const BackupTarget& backup, int type, const HashedFiles& disk, Printer& printer,
                const krutein::Interrupt& interrupt) {
    Amount kept;
    // For contacts alone nothing is copied.
    if (type == kBackupTypeContact) return kept;
    const bool all = !IsTyped(type);
    const std::optional<NeededFiles> needed =
        all ? std::nullopt : std::make_optional<NeededFiles>(backup, type, interrupt);
    const auto catalogue = backup.OpenCatalogue(interrupt);
    for (BackupEntry entry; !printer.IsClosed() && catalogue->Next(entry);) {
        if (entry.kind != BackupEntry::Kind::kFile || !entry.id) continue;
        const HashedFile* const file = disk.Find(*entry.id);
        if (file == nullptr || (!all && !needed->Has(entry))) continue;
        kept.Add(*file);
        Tell(entry, *file, printer);
    }
    return kept;
}

void TellSum(const BackupTarget& backup, int type, const Amount& kept, const Amount& all, Printer& printer) {
    printer.Print(
        [&] {
            return fmt::format("A backup of {} would keep {} of {} files, {} of {}", TypeWords(type),
                               kept.files, all.files, HumanBytes(kept.bytes), HumanBytes(all.bytes));
        },
        [&] {
            Json summary = Printer::Message("summary");
            summary["command"] = NameOf(CommandName::kBackup);
            summary["path"] = backup.folder;
            summary["types"] = TypeWords(type);
            summary["dry_run"] = true;
            summary["files"] = kept.files;
            summary["bytes"] = kept.bytes;
            summary["files_before"] = all.files;
            summary["bytes_before"] = all.bytes;
            return summary;
        });
}

}  // namespace

ExitCode RunDryRun(const Options& options, Printer& printer, const krutein::Interrupt& interrupt) {
    const int type = ParseTypes(options.types);
    const BackupTarget backup = FullBackup(options);
    const HashedFiles disk(backup.folder, backup.layout, HashedFiles::Where::kPlaces, interrupt);
    Amount all;
    for (const HashedFile& file : disk.All())
        all.Add(file);
    const Amount kept = TellKept(backup, type, disk, printer, interrupt);
    TellSum(backup, type, kept, all, printer);
    return ExitCode::kDone;
}
