#pragma once

/// What a backup holds: one of the two whole-device values, or a sum of bits. The values stand in record
/// files and in hosts in the field: never change them.
enum BackupType : int {
    kBackupTypeFull = -1,   ///< the whole device
    kBackupTypeITunes = 0,  ///< the whole device, in the manner of a desktop backup
    kBackupTypeWeChat = 2,
    kBackupTypeWhatsApp = 4,
    kBackupTypeSms = 8,
    kBackupTypeContact = 16,
    kBackupTypeICloud = 64,  ///< names a folder, selects no files
    kBackupTypeCache = 128   ///< names the cache folder only
};
