#include "Host/Archiver/Layout.h"

namespace krutein {
namespace {

constexpr int kFirstVersionWithFolders = 10;
constexpr std::size_t kFolderChars = 2;
constexpr std::size_t kIdDigits = 40;

}  // namespace

BackupLayout LayoutOf(const SampleDevice& device) {
    return device.MajorVersion() < kFirstVersionWithFolders ? BackupLayout::kOlder : BackupLayout::kNewer;
}

std::string CatalogueName(BackupLayout layout) {
    return layout == BackupLayout::kOlder ? kManifestMbdbName : kManifestDbName;
}

bool IsFileId(std::string_view text) {
    return text.size() == kIdDigits && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::string PlaceOf(BackupLayout layout, const std::string& fileId) {
    return layout == BackupLayout::kOlder ? fileId : fileId.substr(0, kFolderChars) + "/" + fileId;
}

std::optional<std::string> BackupFolderPath(const std::string& backupPath, const std::string& udid) {
    const bool plain = !udid.empty() && udid != "." && udid != ".." && udid.find('/') == std::string::npos;
    if (backupPath.empty() || !plain) return std::nullopt;
    return backupPath + (backupPath.back() == '/' ? "" : "/") + udid;
}

}  // namespace krutein
