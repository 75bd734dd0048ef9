#include "Host/Archiver/Connection.h"
#include "Host/Archiver/Layout.h"
#include "Host/Archiver/Pace.h"
#include "Host/Archiver/StoredBackup.h"
#include "Host/Archiver/ToolError.h"
#include "Host/Archiver/jobs/Jobs.h"

namespace krutein {
namespace {

void RestoreFrom(const CommandLine& command, const std::string& source, Selection selection,
                 MessageWriter& messages) {
    Connect(command.target);
    const auto path = BackupFolderPath(command.backupPath, source);
    if (!path) {
        throw ToolError(kToolNoBackup, "there is no backup of '" + source + "' in " + command.backupPath);
    }
    StoredBackup backup(*path);
    if (!backup.IsFinished()) throw ToolError(kToolBackupDamaged, *path + " holds no finished backup");
    const auto catalogue = backup.OpenCatalogue(selection);
    const int total = catalogue->CountFiles();
    messages.Progress(0, total, "Preparing the restore");

    Pace pace;
    CatalogueEntry entry;
    for (int done = 1; catalogue->NextFile(entry); ++done) {
        backup.ReadFile(entry);
        messages.Progress(done, total, entry.domain + "/" + entry.path);
        pace.Await();
    }
}

}  // namespace

void Restore(const CommandLine& command, MessageWriter& messages) {
    RestoreFrom(command, command.target, Selection::kAllFiles, messages);
}

void RestoreSettings(const CommandLine& command, MessageWriter& messages) {
    RestoreFrom(command, command.source, Selection::kSettings, messages);
}

}  // namespace krutein
