#include "Host/Archiver/Layout.h"

namespace krutein {
namespace {

constexpr int kFirstVersionWithFolders = 10;
constexpr std::size_t kFolderChars = 2;
constexpr std::size_t kIdDigits = 40;

}  // namespace

Layout LayoutOf(const SampleDevice& device) {
    return device.MajorVersion() < kFirstVersionWithFolders ? Layout::kFlat : Layout::kFolders;
}

std::string CatalogueName(Layout layout) {
    return layout == Layout::kFlat ? kManifestMbdbName : kManifestDbName;
}

bool IsFileId(std::string_view text) {
    return text.size() == kIdDigits && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::string PlaceOf(Layout layout, const std::string& fileId) {
    return layout == Layout::kFlat ? fileId : fileId.substr(0, kFolderChars) + "/" + fileId;
}

std::optional<std::string> BackupFolderPath(const std::string& backupPath, const std::string& udid) {
    const bool plain = !udid.empty() && udid != "." && udid != ".." && udid.find('/') == std::string::npos;
    if (backupPath.empty() || !plain) return std::nullopt;
    return backupPath + (backupPath.back() == '/' ? "" : "/") + udid;
}

}  // namespace krutein
