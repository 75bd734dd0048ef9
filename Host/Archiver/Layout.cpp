#include "Host/Archiver/Layout.h"

#include "Host/Archiver/ToolError.h"

namespace krutein {
namespace {

constexpr int kFirstVersion = 10;
constexpr std::size_t kFolderChars = 2;

}  // namespace

void CheckLayout(const SampleDevice& device) {
    if (device.MajorVersion() >= kFirstVersion) return;
    throw ToolError(kToolFailed, "backups of version " + device.systemVersion + " (" + device.udid +
                                     ") are not supported: their catalogue is Manifest.mbdb");
}

std::string PlaceOf(const std::string& fileId) {
    return fileId.substr(0, kFolderChars) + "/" + fileId;
}

std::optional<std::string> BackupFolderPath(const std::string& backupPath, const std::string& udid) {
    const bool plain = !udid.empty() && udid != "." && udid != ".." && udid.find('/') == std::string::npos;
    if (backupPath.empty() || !plain) return std::nullopt;
    return backupPath + (backupPath.back() == '/' ? "" : "/") + udid;
}

}  // namespace krutein
