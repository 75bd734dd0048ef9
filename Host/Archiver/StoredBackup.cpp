#include "Host/Archiver/StoredBackup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Host/Archiver/Layout.h"
#include "Host/Archiver/ManifestDb.h"
#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"
#include "Host/BackupFormat/SnapshotState.h"

namespace krutein {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{256} * 1024;
/// Ours have some hundred bytes. The bound also keeps libplist from trees that are too deep for the stack.
constexpr std::size_t kMaxDescriptionBytes = std::size_t{64} * 1024;

// A device or a pipe in the place of a file must not keep us waiting.
constexpr int kOpenFile = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

[[noreturn]] void ThrowDamaged(const std::string& what, const std::string& reason) {
    throw ToolError(kToolBackupDamaged, what + " " + reason);
}

std::string ErrnoText(int error) {
    return std::generic_category().message(error);
}

/// \return as read; EINTR never. \throws Stopped
ssize_t ReadSome(int descriptor, std::vector<char>& chunk) {
    for (;;) {
        ThrowIfStopped();
        const ssize_t count = read(descriptor, chunk.data(), chunk.size());
        if (count >= 0 || errno != EINTR) return count;
    }
}

bool IsRegular(int descriptor, struct stat& info) {
    return fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

StoredBackup::StoredBackup(const std::string& path)
    : m_path(path), m_folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), m_chunk(kChunkBytes) {
    if (m_folder.IsOpen()) return;
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    throw ToolError(missing ? kToolNoBackup : kToolBackupDamaged,
                    "cannot open the backup " + path + ": " + ErrnoText(errno));
}

bool StoredBackup::IsFinished() const {
    return SaysFinished(ReadDescription(kStatusName));
}

BackupFacts StoredBackup::Facts() const {
    return ReadFacts(ReadDescription(kInfoName));
}

std::unique_ptr<CatalogueReader> StoredBackup::OpenCatalogue(Selection selection) const {
    struct stat info {};
    const bool found = fstatat(m_folder.Get(), kCatalogueName, &info, AT_SYMLINK_NOFOLLOW) == 0;
    const std::string path = m_path + "/" + kCatalogueName;
    if (!found || !S_ISREG(info.st_mode)) ThrowDamaged(path, "is missing");
    return std::make_unique<ManifestDbReader>(path, selection);
}

void StoredBackup::ReadFile(const CatalogueEntry& entry) {
    const std::string name = PlaceOf(entry.fileId) + " (" + entry.domain + "/" + entry.path + ")";
    const UniqueFd file = OpenFile(entry.fileId);
    if (!file.IsOpen()) ThrowDamaged(name, "cannot be opened: " + ErrnoText(errno));
    struct stat info {};
    if (!IsRegular(file.Get(), info)) ThrowDamaged(name, "is no file");
    std::int64_t bytes = 0;
    // A wrong size is noticed before a large file is read in vain.
    if (info.st_size == entry.size) {
        ssize_t count = 0;
        while ((count = ReadSome(file.Get(), m_chunk)) > 0)
            bytes += count;
        if (count < 0) ThrowDamaged(name, "cannot be read: " + ErrnoText(errno));
    } else {
        bytes = info.st_size;
    }
    if (bytes != entry.size) {
        ThrowDamaged(name,
                     "has " + std::to_string(bytes) + " bytes instead of " + std::to_string(entry.size));
    }
}

/// Folder by folder, since links are followed in all parts of a path but the last.
UniqueFd StoredBackup::OpenFile(const std::string& fileId) const {
    const std::string place = PlaceOf(fileId);
    const std::string folder = place.substr(0, place.find('/'));
    const UniqueFd parent(openat(m_folder.Get(), folder.c_str(), kOpenFolder));
    if (!parent.IsOpen()) return UniqueFd();
    return UniqueFd(openat(parent.Get(), fileId.c_str(), kOpenFile));
}

/// \return "" for a file that is missing, too large or otherwise not what we wrote.
std::string StoredBackup::ReadDescription(const std::string& name) const {
    const UniqueFd file(openat(m_folder.Get(), name.c_str(), kOpenFile));
    struct stat info {};
    if (!file.IsOpen() || !IsRegular(file.Get(), info)) return {};
    std::vector<char> chunk(kMaxDescriptionBytes + 1);
    std::string content;
    ssize_t count = 0;
    while ((count = ReadSome(file.Get(), chunk)) > 0 && content.size() <= kMaxDescriptionBytes)
        content.append(chunk.data(), static_cast<std::size_t>(count));
    return count < 0 || content.size() > kMaxDescriptionBytes ? std::string() : content;
}

}  // namespace krutein
