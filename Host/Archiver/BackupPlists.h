#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "Host/SampleDevice/SampleDevice.h"

/// The property lists that lie next to a backup's files. Times are in seconds since 1970.
namespace krutein {

constexpr char kInfoName[] = "Info.plist";
constexpr char kStatusName[] = "Status.plist";
constexpr char kManifestName[] = "Manifest.plist";

/// How far a backup is. Only the status file tells a finished one from one that was interrupted.
enum class SnapshotState { kUploading, kFinished };

std::string InfoPlist(const SampleDevice& device, std::time_t time);
std::string StatusPlist(const SampleDevice& device, std::time_t time, SnapshotState state);
/// \param apps  the bundle IDs of the apps with files in the backup.
std::string ManifestPlist(const SampleDevice& device, std::time_t time, const std::vector<std::string>& apps);

/// What Info.plist says of the device and the backup; texts that it does not have are "".
struct BackupFacts {
    std::string deviceName;
    std::string productType;
    std::string systemVersion;
    std::string date;  ///< "2024-05-06 07:08:09 UTC"
};

/// \param info  may be any bytes.
BackupFacts ReadFacts(const std::string& info);

}  // namespace krutein
