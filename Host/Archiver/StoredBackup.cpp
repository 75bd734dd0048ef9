#include "Host/Archiver/StoredBackup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Host/Archiver/FolderTree.h"
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

std::unique_ptr<CatalogueReader> StoredBackup::OpenCatalogue(Selection selection) {
    m_layout = FindLayout();
    const std::string path = m_path + "/" + CatalogueName(m_layout);
    // Only the catalogue of this layout can be cut so that it does not show.
    if (m_layout == BackupLayout::kOlder) {
        RefuseUnlisted(krutein::OpenCatalogue(m_layout, path, Selection::kAllFiles)->CountFiles());
    }
    return krutein::OpenCatalogue(m_layout, path, selection);
}

bool StoredBackup::HasCatalogue(BackupLayout layout) const {
    struct stat info {};
    const std::string name = CatalogueName(layout);
    return fstatat(m_folder.Get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(info.st_mode);
}

/// \param listed  how many files the catalogue of a flat backup lists.
void StoredBackup::RefuseUnlisted(int listed) const {
    int files = 0;
    ForEachName(m_folder.Get(), m_path,
                [&files](const std::string& name) { files += IsFileId(name) ? 1 : 0; });
    if (files <= listed) return;
    ThrowDamaged(m_path, "has " + std::to_string(files) + " files, of which its catalogue lists only " +
                             std::to_string(listed));
}

/// The catalogue tells the layout. A backup that has both is not guessed at.
BackupLayout StoredBackup::FindLayout() const {
    const bool flat = HasCatalogue(BackupLayout::kOlder);
    if (flat == HasCatalogue(BackupLayout::kNewer)) {
        ThrowDamaged(m_path, std::string("has ") + (flat ? "both " : "neither ") + kManifestDbName +
                                 (flat ? " and " : " nor ") + kManifestMbdbName);
    }
    return flat ? BackupLayout::kOlder : BackupLayout::kNewer;
}

void StoredBackup::ReadFile(const CatalogueEntry& entry) {
    const std::string place = PlaceOf(m_layout, entry.fileId);
    const std::string name = place + " (" + entry.domain + "/" + entry.path + ")";
    const UniqueFd file = OpenFile(place);
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
UniqueFd StoredBackup::OpenFile(const std::string& place) const {
    const std::size_t slash = place.find('/');
    if (slash == std::string::npos) return UniqueFd(openat(m_folder.Get(), place.c_str(), kOpenFile));
    const UniqueFd parent(openat(m_folder.Get(), place.substr(0, slash).c_str(), kOpenFolder));
    if (!parent.IsOpen()) return UniqueFd();
    return UniqueFd(openat(parent.Get(), place.c_str() + slash + 1, kOpenFile));
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
