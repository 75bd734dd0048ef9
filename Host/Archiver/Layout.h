#pragma once

#include <optional>
#include <string>

#include "Host/SampleDevice/SampleDevice.h"

/// Where the files of a backup lie. Devices of version 10 and later have a catalogue Manifest.db and their
/// files in folders named for the first two characters of the file ID.
namespace krutein {

constexpr char kCatalogueName[] = "Manifest.db";

/// \throws ToolError for devices below version 10, whose layout is another.
void CheckLayout(const SampleDevice& device);

/// Where a file lies below the backup's folder.
std::string PlaceOf(const std::string& fileId);

/// The folder of a device's backup.
/// \param udid  may be any text.
/// \return nothing for the empty path, and for a UDID that would lead elsewhere.
std::optional<std::string> BackupFolderPath(const std::string& backupPath, const std::string& udid);

}  // namespace krutein
