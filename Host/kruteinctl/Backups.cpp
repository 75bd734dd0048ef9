#include "Host/kruteinctl/Backups.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <regex>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Folder.h"
#include "Host/kruteinctl/Text.h"

namespace fs = std::filesystem;

namespace {

/// The time in the name of a further backup, "-20240305-070809"; "" for the first one, nothing for other
/// names.
std::optional<std::string> StampIn(const std::string& name, const std::string& udid) {
    static const std::regex stamp("-[0-9]{8}-[0-9]{6}");
    if (name.compare(0, udid.size(), udid) != 0) return std::nullopt;
    const std::string rest = name.substr(udid.size());
    if (rest.empty() || std::regex_match(rest, stamp)) return rest;
    return std::nullopt;
}

/// The name with the latest time; the first backup, without one, is the oldest.
std::optional<std::string> NewestIn(const std::string& folder, const std::string& udid) {
    std::optional<std::string> newest;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        const std::optional<std::string> stamp = StampIn(name, udid);
        if (!stamp || !IsBackup(entry.path().string())) continue;
        if (!newest || *StampIn(*newest, udid) < *stamp) newest = name;
    }
    return newest;
}

}  // namespace

bool IsBackup(const std::string& folder) {
    std::error_code error;
    return fs::exists(folder + "/Manifest.db", error) || fs::exists(folder + "/Manifest.mbdb", error);
}

BackupPlace FindBackup(const std::string& folder, const std::string& udid) {
    if (IsBackup(folder)) {
        const fs::path path(folder);
        return {path.parent_path().string(), path.filename().string()};
    }
    const std::optional<std::string> newest = NewestIn(folder, udid);
    if (!newest) {
        throw Failure(ExitCode::kNoBackup, fmt::format("no backup of {} in {}", udid, Printable(folder)));
    }
    return {folder, *newest};
}

ToolView::ToolView(const BackupPlace& backup, const std::string& udid) : m_folder(backup.parent) {
    if (backup.name == udid) return;
    std::string folder = (fs::temp_directory_path() / "kruteinctl-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw Failure(ExitCode::kFailed, fmt::format("cannot make {}: {}", folder, std::strerror(errno)));
    }
    m_folder = CheckedFolder(folder);
    m_temporary = true;
    fs::create_directory_symlink(backup.Path(), fs::path(m_folder) / udid);
}

ToolView::~ToolView() {
    std::error_code ignored;
    if (m_temporary) fs::remove_all(m_folder, ignored);
}
