#include "Host/kruteinctl/BackupTarget.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "Host/kruteinctl/Backups.h"
#include "Host/kruteinctl/Encryption.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Types.h"

namespace fs = std::filesystem;

namespace {

constexpr char kNewerName[] = "Manifest.db";
constexpr char kOlderName[] = "Manifest.mbdb";

/// A folder with one of these was a backup once, even when its catalogue is gone.
constexpr const char* kMarks[] = {"Info.plist", "Status.plist", "Manifest.plist"};

[[noreturn]] void NoBackup(const std::string& path, const std::string& why) {
    throw Failure(ExitCode::kNoBackup, fmt::format("there is no backup at {}: {}", Printable(path), why));
}

std::string Canonical(const std::string& named) {
    std::error_code error;
    const fs::path path = fs::canonical(named, error);
    if (error) NoBackup(named, error.message());
    return path.string();
}

/// True for links that lead nowhere too.
bool Exists(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

bool WasBackup(const std::string& folder) {
    return std::any_of(std::begin(kMarks), std::end(kMarks),
                       [&](const char* name) { return Exists(fs::path(folder) / name); });
}

/// A record in or around the backup that is there but not readable.
std::string DamagedRecord(const std::string& backup) {
    for (const std::string& folder : {backup, fs::path(backup).parent_path().string()}) {
        if (Exists(fs::path(folder) / kRecordFile) && !ReadRecord(folder)) {
            return (fs::path(folder) / kRecordFile).string();
        }
    }
    return {};
}

BackupTarget TargetIn(const std::string& backup) {
    BackupTarget target;
    target.folder = backup;
    const bool older = !Exists(backup + "/" + kNewerName) && Exists(backup + "/" + kOlderName);
    target.layout = older ? krutein::BackupLayout::kOlder : krutein::BackupLayout::kNewer;
    target.catalogue = backup + "/" + (older ? kOlderName : kNewerName);
    target.record = RecordOf(backup);
    if (!target.record) target.damagedRecord = DamagedRecord(backup);
    return target;
}

/// The backup that a record speaks of, beside it.
BackupTarget TargetOf(const Record& record) {
    const std::string& name = record.deviceID;
    const std::string file = Printable(record.folder + "/" + kRecordFile);
    // The name is a text from a file: it must not lead elsewhere.
    if (name == "." || name == ".." || name.find('/') != std::string::npos) {
        throw Failure(ExitCode::kBackupDamaged, fmt::format("{} names no device", file));
    }
    std::error_code error;
    const fs::file_status status = fs::symlink_status(record.BackupPath(), error);
    if (fs::is_directory(status)) {
        BackupTarget target = TargetIn(record.BackupPath());
        target.record = record;
        return target;
    }
    if (fs::exists(status)) {
        throw Failure(ExitCode::kBackupDamaged,
                      fmt::format("{} is no folder", Printable(record.BackupPath())));
    }
    BackupTarget target;
    target.record = record;
    return target;
}

}  // namespace

bool BackupTarget::IsTyped() const {
    return record && ::IsTyped(record->type);
}

void BackupTarget::RequireFolder() const {
    if (!folder.empty()) return;
    NoBackup(record->BackupPath(), "its record is all there is, as after a job for contacts alone");
}

std::unique_ptr<krutein::BackupCatalogue> BackupTarget::OpenCatalogue(
    const krutein::Interrupt& interrupt) const {
    if (!Exists(catalogue)) {
        throw krutein::BackupDamage(fmt::format("{}/{} or {} is missing", folder, kNewerName, kOlderName));
    }
    try {
        return krutein::BackupCatalogue::Open(catalogue, layout, interrupt);
    } catch (const krutein::BackupDamage&) {
        if (IsEncrypted(folder)) throw Failure(ExitCode::kEncrypted, kEncryptedText);
        throw;
    }
}

BackupTarget FindTarget(const std::string& named) {
    const std::string folder = Canonical(named);
    if (!fs::is_directory(folder)) NoBackup(named, "it is no folder");
    if (IsBackup(folder) || WasBackup(folder)) return TargetIn(folder);
    if (const std::optional<Record> record = ReadRecord(folder)) return TargetOf(*record);
    const std::string record = folder + "/" + kRecordFile;
    if (Exists(record)) {
        throw Failure(ExitCode::kBackupDamaged, fmt::format("the record {} is damaged", Printable(record)));
    }
    NoBackup(named, "it has no catalogue and no record");
}

BackupTarget FindTargetOrCatalogue(const std::string& named) {
    std::error_code error;
    // Not through a link at its end: what it leads to may have another name, and other files beside it.
    const fs::path path = fs::absolute(named, error).lexically_normal();
    const bool older = path.extension() == ".mbdb";
    if (fs::is_directory(path, error) || (!older && path.extension() != ".db")) return FindTarget(named);
    BackupTarget target;
    target.folder = Canonical(path.parent_path().string());
    target.catalogue = target.folder + "/" + path.filename().string();
    if (!Exists(target.catalogue)) throw krutein::BackupDamage(target.catalogue + " is missing");
    target.layout = older ? krutein::BackupLayout::kOlder : krutein::BackupLayout::kNewer;
    return target;
}
