#include <ctime>

#include "Host/Archiver/BackupFolder.h"
#include "Host/Archiver/BackupPlists.h"
#include "Host/Archiver/BackupRun.h"
#include "Host/Archiver/Connection.h"
#include "Host/Archiver/Layout.h"
#include "Host/Archiver/Pace.h"
#include "Host/Archiver/ToolError.h"
#include "Host/Archiver/jobs/Jobs.h"

namespace krutein {

void BackUp(const CommandLine& command, MessageWriter& messages) {
    const SampleDevice device = Connect(command.target);
    const auto path = BackupFolderPath(command.backupPath, device.udid);
    if (!path) throw ToolError(kToolNotWritable, "no folder is given for the backup");
    const int total = CountFiles(device);
    messages.Progress(0, total, "Preparing the backup");

    const std::time_t now = std::time(nullptr);
    BackupFolder folder(*path, LayoutOf(device));
    folder.Replace(StatusPlist(device, now, SnapshotState::kUploading));
    Pace pace;
    int done = 0;
    BackupRun run(device, folder, now, [&](const std::string& file) {
        messages.Progress(++done, total, file);
        pace.Await();
    });
    run.Write();
}

}  // namespace krutein
