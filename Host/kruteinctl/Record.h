#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Host/BackupFormat/Interrupt.h"

/// What the record file of a backup, backup_config.ini, says. Texts are as they stand in the file.
struct Record {
    std::string deviceID;
    std::string deviceName;
    std::string version;
    std::string serialNumber;
    std::string productType;
    std::string timeText;  ///< "2024-03-05T07:08:09Z", in local time
    long long kib = 0;     ///< size of the device's backup
    int type = 0;
    bool isValid = false;

    std::string folder;  ///< in which the file lies

    std::uint64_t Bytes() const { return kib < 0 ? 0 : static_cast<std::uint64_t>(kib) * 1024; }

    /// The device's backup. Taken from where the record lies and not from what it says, so that backups can
    /// be moved.
    std::string BackupPath() const { return folder + "/" + deviceID; }
};

/// The time of a record as people write it: "2024-03-05 07:08:09".
std::string HumanRecordTime(const std::string& timeText);

constexpr char kRecordFile[] = "backup_config.ini";

/// The record in a folder. \return nothing when there is none or it is damaged: no INI file, without a device
/// or a type.
std::optional<Record> ReadRecord(const std::string& folder);

/// The record of a backup: in the folder of the backup itself or in the one around it.
std::optional<Record> RecordOf(const std::string& backup);

/// What lies below a folder.
struct FoundRecords {
    std::vector<Record> records;        ///< the newest first
    std::vector<std::string> damaged;   ///< paths of record files that cannot be read
    std::vector<std::string> unlisted;  ///< backups without a record
};

/// Looks for records everywhere below a folder, but not inside of backups.
/// \throws krutein::Interrupt::Raised.
FoundRecords FindRecords(const std::string& folder, const krutein::Interrupt& interrupt);
