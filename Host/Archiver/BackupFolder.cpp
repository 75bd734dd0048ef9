#include "Host/Archiver/BackupFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Host/Archiver/BackupPlists.h"
#include "Host/Archiver/FolderTree.h"
#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"

namespace krutein {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{256} * 1024;
constexpr mode_t kFileMode = 0644;
constexpr mode_t kFolderMode = 0755;

/// A folder with one of these is taken for a backup, which a new one may replace.
constexpr const char* kMarks[] = {kInfoName, kStatusName, kManifestDbName, kManifestMbdbName};

}  // namespace

BackupFolder::BackupFolder(const std::string& path, BackupLayout layout)
    : m_path(path), m_layout(layout), m_chunk(kChunkBytes) {
    MakeFolders(path);
    // A link is not followed: what it leads to was not chosen as this device's backup.
    m_folder = UniqueFd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!m_folder.IsOpen()) ThrowErrno("cannot open the folder " + path, errno);
    RefuseForeign();
}

void BackupFolder::RefuseForeign() const {
    for (const char* const name : kMarks) {
        struct stat info {};
        const bool found = fstatat(m_folder.Get(), name, &info, AT_SYMLINK_NOFOLLOW) == 0;
        if (found && S_ISREG(info.st_mode)) return;
    }
    ForEachName(m_folder.Get(), m_path, [this](const std::string& name) {
        throw ToolError(kToolNotWritable, m_path + " holds something else than a backup: " + name);
    });
}

void BackupFolder::Replace(const std::string& status) {
    PutDescription(kStatusName, status);
    RemoveAllBut(m_folder.Get(), kStatusName, m_path);
}

void BackupFolder::PutFile(const std::string& fileId, FileBytes bytes) {
    EnsureFolderFor(fileId);
    Write(PlaceOf(m_layout, fileId), bytes);
}

std::string BackupFolder::DatabasePath(const std::string& fileId) {
    EnsureFolderFor(fileId);
    return PathOf(PlaceOf(m_layout, fileId));
}

std::string BackupFolder::CataloguePath() {
    return PathOf(CatalogueName(m_layout));
}

void BackupFolder::PutDescription(const std::string& name, const std::string& content) {
    if (unlinkat(m_folder.Get(), name.c_str(), 0) != 0 && errno != ENOENT) {
        ThrowErrno("cannot replace " + PathOf(name), errno);
    }
    FileBytes bytes(content);
    Write(name, bytes);
}

void BackupFolder::EnsureFolderFor(const std::string& fileId) {
    if (m_layout == BackupLayout::kOlder) return;
    const std::string folder = fileId.substr(0, 2);
    bool& exists = m_hasFolder.at(std::stoul(folder, nullptr, 16));
    if (exists) return;
    if (mkdirat(m_folder.Get(), folder.c_str(), kFolderMode) != 0) {
        ThrowErrno("cannot create " + PathOf(folder), errno);
    }
    exists = true;
}

void BackupFolder::Write(const std::string& place, FileBytes& bytes) {
    constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd file(openat(m_folder.Get(), place.c_str(), kNewFile, kFileMode));
    if (!file.IsOpen()) ThrowErrno("cannot create " + PathOf(place), errno);
    try {
        Copy(bytes, file, place);
    } catch (...) {
        unlinkat(m_folder.Get(), place.c_str(), 0);
        throw;
    }
}

void BackupFolder::Copy(FileBytes& bytes, UniqueFd& file, const std::string& place) {
    while (std::size_t left = bytes.Read(m_chunk.data(), m_chunk.size())) {
        for (const char* next = m_chunk.data(); left > 0;) {
            ThrowIfStopped();
            const ssize_t written = write(file.Get(), next, left);
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) ThrowErrno("cannot write " + PathOf(place), errno);
            next += written;
            left -= static_cast<std::size_t>(written);
        }
    }
    if (const int error = file.Close()) ThrowErrno("cannot write " + PathOf(place), error);
}

}  // namespace krutein
