#include "Host/Archiver/EntryAttributes.h"

#include <sys/stat.h>

#include <string>

namespace krutein {
namespace {

constexpr std::uint32_t kMobileUser = 501;
/// Readable after the device was unlocked once.
constexpr std::uint8_t kFileProtection = 3;

/// Sample files were made and changed in 2024, each at a time of its own that follows from its ID.
constexpr std::uint32_t kFirstTime = 1'704'067'200;  // 2024-01-01 00:00:00 UTC
constexpr std::uint32_t kSecondsOfYear = 366U * 24 * 60 * 60;

std::uint16_t ModeOf(EntryKind kind) {
    switch (kind) {
        case EntryKind::kFolder:
            return S_IFDIR | 0755U;
        case EntryKind::kLink:
            return S_IFLNK | 0755U;
        default:
            return S_IFREG | 0644U;
    }
}

}  // namespace

EntryAttributes AttributesOf(const CatalogueEntry& entry) {
    EntryAttributes attributes;
    attributes.mode = ModeOf(entry.kind);
    attributes.user = kMobileUser;
    attributes.inode = static_cast<std::uint32_t>(std::stoul(entry.fileId.substr(0, 8), nullptr, 16));
    attributes.time = kFirstTime + attributes.inode % kSecondsOfYear;
    attributes.protectionClass = entry.kind == EntryKind::kFile ? kFileProtection : std::uint8_t{0};
    return attributes;
}

}  // namespace krutein
