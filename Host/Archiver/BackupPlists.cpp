#include "Host/Archiver/BackupPlists.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <memory>
#include <utility>

#include "Common/std/std_sha1.h"
#include "Host/Archiver/Layout.h"
#include "Host/Archiver/Plist.h"
#include "Host/BackupFormat/SnapshotState.h"

namespace krutein {
namespace {

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

/// 32 hex digits that are another for each backup.
std::string BackupId(const SampleDevice& device, std::time_t time) {
    return Upper(STD_FILE_CalcStringSha1A(device.udid + " " + std::to_string(time))).substr(0, 32);
}

std::string UuidOf(const std::string& digits) {
    std::string uuid = digits;
    for (const std::size_t hyphen : {8U, 13U, 18U, 23U})
        uuid.insert(hyphen, 1, '-');
    return uuid;
}

/// The versions of the two files' own formats.
struct FormatVersions {
    const char* status;
    const char* manifest;
};

FormatVersions VersionsOf(const SampleDevice& device) {
    return LayoutOf(device) == BackupLayout::kOlder ? FormatVersions{"2.4", "9.1"}
                                                    : FormatVersions{"3.3", "10.0"};
}

using PlistOwner = std::unique_ptr<void, void (*)(plist_t)>;

std::string TextOf(plist_t dictionary, const char* key) {
    const plist_t node = plist_dict_get_item(dictionary, key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return {};
    return plist_get_string_ptr(node, nullptr);
}

std::string DateOf(plist_t dictionary, const char* key) {
    const plist_t node = plist_dict_get_item(dictionary, key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_DATE) return {};
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    const std::time_t time = kPlistEpoch + seconds;
    std::tm utc{};
    char text[64];
    if (gmtime_r(&time, &utc) == nullptr) return {};
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &utc)};
}

}  // namespace

std::string InfoPlist(const SampleDevice& device, std::time_t time) {
    Plist info;
    info.Set("Build Version", device.buildVersion);
    info.Set("Device Name", device.name);
    info.Set("Display Name", device.name);
    info.Set("GUID", BackupId(device, time));
    info.SetDate("Last Backup Date", time);
    if (!device.phoneNumber.empty()) info.Set("Phone Number", device.phoneNumber);
    info.Set("Product Type", device.productType);
    info.Set("Product Version", device.systemVersion);
    info.Set("Serial Number", device.serialNumber);
    info.Set("Target Identifier", device.udid);
    info.Set("Target Type", "Device");
    info.Set("Unique Identifier", Upper(device.udid));
    return info.ToXml();
}

std::string StatusPlist(const SampleDevice& device, std::time_t time, SnapshotState state) {
    Plist status;
    status.Set("BackupState", "new");
    status.SetDate("Date", time);
    status.Set("IsFullBackup", true);
    status.Set(kSnapshotStateKey, state == SnapshotState::kFinished ? kFinishedState : kUploadingState);
    status.Set("UUID", UuidOf(BackupId(device, time)));
    status.Set("Version", VersionsOf(device).status);
    return status.ToBinary();
}

std::string ManifestPlist(const SampleDevice& device, std::time_t time,
                          const std::vector<std::string>& apps) {
    Plist lockdown;
    lockdown.Set("BuildVersion", device.buildVersion);
    lockdown.Set("DeviceName", device.name);
    lockdown.Set("ProductType", device.productType);
    lockdown.Set("ProductVersion", device.systemVersion);
    lockdown.Set("SerialNumber", device.serialNumber);
    lockdown.Set("UniqueDeviceID", device.udid);
    Plist applications;
    for (const std::string& app : apps) {
        Plist application;
        application.Set("CFBundleIdentifier", app);
        applications.Set(app, std::move(application));
    }
    Plist manifest;
    manifest.Set("Applications", std::move(applications));
    manifest.SetDate("Date", time);
    manifest.Set("IsEncrypted", false);
    manifest.Set("Lockdown", std::move(lockdown));
    manifest.Set("Version", VersionsOf(device).manifest);
    manifest.Set("WasPasscodeSet", false);
    return manifest.ToBinary();
}

BackupFacts ReadFacts(const std::string& info) {
    plist_t node = nullptr;
    plist_from_xml(info.data(), static_cast<std::uint32_t>(info.size()), &node);
    if (node == nullptr) return {};
    const PlistOwner owner(node, &plist_free);
    return {TextOf(node, "Device Name"), TextOf(node, "Product Type"), TextOf(node, "Product Version"),
            DateOf(node, "Last Backup Date")};
}

}  // namespace krutein
