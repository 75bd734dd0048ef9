#include "Host/Archiver/MbFile.h"

#include <sys/stat.h>

#include <utility>
#include <vector>

#include "Host/Archiver/BinaryPlistReader.h"
#include "Host/Archiver/BinaryPlistWriter.h"

namespace krutein {
namespace {

using Object = BinaryPlistWriter::Object;

// The places of the archive's objects.
constexpr std::uint8_t kRootUid = 1;
constexpr std::uint8_t kPathUid = 2;
constexpr std::uint8_t kClassUid = 3;
constexpr std::uint8_t kTargetUid = 4;

constexpr std::uint64_t kArchiveVersion = 100'000;
constexpr std::uint64_t kMobileUser = 501;
/// Readable after the device was unlocked once.
constexpr std::uint64_t kFileProtection = 3;

/// Sample files were made and changed in 2024, each at a time of its own that follows from its ID.
constexpr std::uint64_t kFirstTime = 1'704'067'200;  // 2024-01-01 00:00:00 UTC
constexpr std::uint64_t kSecondsOfYear = 366ULL * 24 * 60 * 60;

std::uint64_t ModeOf(EntryKind kind) {
    switch (kind) {
        case EntryKind::kFolder:
            return S_IFDIR | 0755U;
        case EntryKind::kLink:
            return S_IFLNK | 0755U;
        default:
            return S_IFREG | 0644U;
    }
}

Object NewRoot(BinaryPlistWriter& archive, const CatalogueEntry& entry) {
    const std::uint64_t inode = std::stoul(entry.fileId.substr(0, 8), nullptr, 16);
    const Object time = archive.Number(kFirstTime + inode % kSecondsOfYear);
    const Object owner = archive.Number(kMobileUser);
    std::vector<std::pair<const char*, Object>> members = {
        {"LastModified", time},
        {"Flags", archive.Number(0)},
        {"GroupID", owner},
        {"LastStatusChange", time},
        {"Birth", time},
        {"Size", archive.Number(static_cast<std::uint64_t>(entry.size))},
        {"InodeNumber", archive.Number(inode)},
        {"Mode", archive.Number(ModeOf(entry.kind))},
        {"UserID", owner},
        {"ProtectionClass", archive.Number(entry.kind == EntryKind::kFile ? kFileProtection : 0)},
        {"RelativePath", archive.Uid(kPathUid)},
        {"$class", archive.Uid(kClassUid)},
    };
    if (entry.kind == EntryKind::kLink) members.emplace_back("Target", archive.Uid(kTargetUid));
    return archive.Dictionary(members);
}

Object NewClass(BinaryPlistWriter& archive) {
    const Object name = archive.Text("MBFile");
    const Object names = archive.Array({name, archive.Text("NSObject")});
    return archive.Dictionary({{"$classname", name}, {"$classes", names}});
}

Object NewObjects(BinaryPlistWriter& archive, const CatalogueEntry& entry) {
    std::vector<Object> objects = {archive.Text("$null"), NewRoot(archive, entry), archive.Text(entry.path),
                                   NewClass(archive)};
    if (entry.kind == EntryKind::kLink) objects.push_back(archive.Text(entry.linkTarget));
    return archive.Array(objects);
}

}  // namespace

std::string EncodeMbFile(const CatalogueEntry& entry) {
    BinaryPlistWriter archive;
    const Object top = archive.Dictionary({{"root", archive.Uid(kRootUid)}});
    return archive.Finish(archive.Dictionary({{"$version", archive.Number(kArchiveVersion)},
                                              {"$archiver", archive.Text("NSKeyedArchiver")},
                                              {"$top", top},
                                              {"$objects", NewObjects(archive, entry)}}));
}

std::optional<std::int64_t> SizeInMbFile(std::string_view archive) {
    const std::optional<BinaryPlistReader> plist = BinaryPlistReader::Open(archive);
    if (!plist) return std::nullopt;
    const auto top = plist->Member(plist->Top(), "$top");
    const auto objects = plist->Member(plist->Top(), "$objects");
    if (!top || !objects) return std::nullopt;
    const auto root = plist->Member(*top, "root");
    const auto uid = root ? plist->Uid(*root) : std::nullopt;
    const auto file = uid ? plist->Element(*objects, *uid) : std::nullopt;
    const auto size = file ? plist->Member(*file, "Size") : std::nullopt;
    return size ? plist->Number(*size) : std::nullopt;
}

}  // namespace krutein
