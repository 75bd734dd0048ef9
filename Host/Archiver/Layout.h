#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Host/BackupFormat/FileId.h"
#include "Host/SampleDevice/SampleDevice.h"

/// Where the files of a backup lie, and what its catalogue is called.
namespace krutein {

constexpr char kManifestMbdbName[] = "Manifest.mbdb";
constexpr char kManifestDbName[] = "Manifest.db";

/// The layout that a device's backups have.
BackupLayout LayoutOf(const SampleDevice& device);

std::string CatalogueName(BackupLayout layout);

/// Whether a file of a device could be called so in a backup.
bool IsFileId(std::string_view text);

/// Where a file lies below the backup's folder.
std::string PlaceOf(BackupLayout layout, const std::string& fileId);

/// The folder of a device's backup.
/// \param udid  may be any text.
/// \return nothing for the empty path, and for a UDID that would lead elsewhere.
std::optional<std::string> BackupFolderPath(const std::string& backupPath, const std::string& udid);

}  // namespace krutein
