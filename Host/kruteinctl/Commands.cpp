#include "Host/kruteinctl/Commands.h"

#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>

#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Host/kruteinctl/Backups.h"
#include "Host/kruteinctl/Destination.h"
#include "Host/kruteinctl/DeviceQuery.h"
#include "Host/kruteinctl/FacadeRun.h"
#include "Host/kruteinctl/Folder.h"
#include "Host/kruteinctl/HostDevice.h"
#include "Host/kruteinctl/JobRun.h"
#include "Host/kruteinctl/Record.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Types.h"
#include "Host/kruteinctl/Udid.h"
#include "Host/kruteinctl/WorkFolder.h"
#include "Module/BackupLib/BackupType.h"

namespace fs = std::filesystem;

namespace {

Summary SummaryOf(const Options& options, const std::string& udid, const std::string& path) {
    Summary summary;
    summary.command = options.command;
    summary.udid = udid;
    summary.path = path;
    return summary;
}

/// Counts what is on disk, which is what the user has.
void CountFiles(Summary& summary) {
    std::vector<std::string> files;
    std::vector<std::string> folders;
    long long bytes = 0;
    STD_FILE_GetDirInfoA(summary.path, files, folders, bytes, true);
    summary.files = files.size();
    summary.bytes = static_cast<std::uint64_t>(bytes);
}

std::string PrefixOf(const std::string& folder) {
    return folder == "/" ? folder : folder + "/";
}

/// Through the library's facade.
Summary BackUpAll(const Options& options, Session& session, const std::string& udid,
                  const std::string& folder) {
    const WorkFolder work(folder);
    const std::string path = FacadeRun::Make(session).Backup(udid, PrefixOf(folder));
    session.Enter("finishing");
    if (!IsBackup(path)) {
        throw Failure(ExitCode::kNotWritable,
                      fmt::format("the finished backup could not be moved to {}", Printable(path)));
    }
    return SummaryOf(options, udid, path);
}

/// Through the library's manager, which also writes a record.
Summary BackUpTypes(const Options& options, Session& session, const std::string& udid,
                    const std::string& folder) {
    HostDevice device(session, udid);
    const int type = ParseTypes(options.types);
    const bool recordOnly = type == kBackupTypeContact;
    if (recordOnly) {
        session.Note(
            "contacts alone: nothing is copied, a record is written. To keep their files, add another "
            "type: --types contacts,messages");
    }
    const std::string job = RunJob(session, device, folder, type, options.keepFailed);
    Summary summary = SummaryOf(options, udid, recordOnly ? job : job + "/" + udid);
    summary.types = TypeWords(type);
    return summary;
}

void RefuseTyped(const BackupPlace& backup) {
    const std::optional<Record> record = RecordOf(backup.Path());
    if (!record || !IsTyped(record->type)) return;
    throw Failure(
        ExitCode::kUsage,
        fmt::format("{} holds {} only: it is for looking into, and a device that is restored from it "
                    "loses everything else. Take a full backup, or say --force",
                    Printable(backup.Path()), TypeWords(record->type)));
}

}  // namespace

Summary RunBackupCommand(const Options& options, Session& session) {
    const std::string udid = CanonicalUdid(options.udid);
    const std::string folder = CheckedFolder(options.folder);
    if (!options.types.empty()) ParseTypes(options.types);  // before anything is started
    RequireTool();
    session.Enter("asking the device");
    const std::uint64_t needed = QueryBackupSize(session, udid, PrefixOf(folder) + "temp");

    const Destination destination(folder);
    destination.CheckSpace(session, needed);
    Summary summary = options.types.empty() ? BackUpAll(options, session, udid, folder)
                                            : BackUpTypes(options, session, udid, folder);
    CountFiles(summary);
    return summary;
}

Summary RunRestoreCommand(const Options& options, Session& session) {
    const std::string udid = CanonicalUdid(options.udid);
    const BackupPlace backup = FindBackup(CheckedFolder(options.folder), udid);
    if (!options.force) RefuseTyped(backup);
    RequireTool();
    const ToolView view(backup, udid);
    FacadeRun::Make(session).Restore(udid, view.Folder());
    return SummaryOf(options, udid, backup.Path());
}

Summary RunSizeCommand(const Options& options, Session& session) {
    const std::string udid = CanonicalUdid(options.udid);
    const BackupPlace backup = FindBackup(CheckedFolder(options.folder), udid);
    RequireTool();
    session.Enter("asking the backup tool");
    const ToolView view(backup, udid);
    Summary summary = SummaryOf(options, udid, backup.Path());
    summary.bytes = QueryBackupSize(session, udid, view.Folder());
    return summary;
}

void RequireTool() {
    const fs::path contents = fs::path(STD_PATH_GetExeDirA()).parent_path();
    const std::string tool = (contents / "Frameworks/HandsetArchiver").string();
    try {
        CheckedFolder(tool);
    } catch (const Failure& unusable) {
        throw Failure(ExitCode::kToolNotStarted,
                      std::string("the backup tool cannot be started: ") + unusable.what());
    }
    if (access(tool.c_str(), X_OK) != 0) {
        throw Failure(ExitCode::kToolNotStarted,
                      fmt::format("the backup tool is missing or no program: {}", Printable(tool)));
    }
}
