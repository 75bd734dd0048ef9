#include "Host/kruteinctl/Commands.h"

#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>

#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Host/kruteinctl/Backups.h"
#include "Host/kruteinctl/DeviceQuery.h"
#include "Host/kruteinctl/FacadeRun.h"
#include "Host/kruteinctl/Folder.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Udid.h"
#include "Host/kruteinctl/WorkFolder.h"

namespace fs = std::filesystem;

namespace {

/// A folder that a command makes for its result, and that goes again when there is none.
class Destination {
 public:
    explicit Destination(const std::string& folder) : m_folder(folder), m_isNew(!fs::exists(folder)) {
        EnsureWritable(folder);
    }
    ~Destination() {
        if (m_isNew) rmdir(m_folder.c_str());  // refused, and rightly, when something is in it
    }
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

 private:
    std::string m_folder;
    bool m_isNew;
};

void CheckSpace(Session& session, const std::string& folder, std::uint64_t needed) {
    const std::uint64_t available = FreeBytes(folder);
    const std::string numbers = fmt::format("the backup takes {}; {} has {} free", ExactBytes(needed),
                                            Printable(folder), ExactBytes(available));
    if (needed > available) throw Failure(ExitCode::kDiskFull, "not enough space: " + numbers);
    session.Note(numbers);
}

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

}  // namespace

Summary RunBackupCommand(const Options& options, Session& session) {
    const std::string udid = CanonicalUdid(options.udid);
    const std::string folder = CheckedFolder(options.folder);
    RequireTool();
    session.Enter("asking the device");
    const std::string prefix = folder == "/" ? folder : folder + "/";
    const std::uint64_t needed = QueryBackupSize(session, udid, prefix + "temp");

    const Destination destination(folder);
    CheckSpace(session, folder, needed);
    const WorkFolder work(folder);
    const std::string path = FacadeRun::Make(session).Backup(udid, prefix);
    session.Enter("finishing");
    if (!IsBackup(path)) {
        throw Failure(ExitCode::kNotWritable,
                      fmt::format("the finished backup could not be moved to {}", Printable(path)));
    }
    Summary summary = SummaryOf(options, udid, path);
    CountFiles(summary);
    return summary;
}

Summary RunRestoreCommand(const Options& options, Session& session) {
    const std::string udid = CanonicalUdid(options.udid);
    const BackupPlace backup = FindBackup(CheckedFolder(options.folder), udid);
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
