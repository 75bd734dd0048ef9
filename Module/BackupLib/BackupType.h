#pragma once

/// \file
/// The types of backups.

/// What a backup holds: one of the two whole-device values, or a sum of bits. The values stand in record
/// files and in hosts in the field: never change them.
enum BackupType : int {
    kBackupTypeFull = -1,     ///< the whole device
    kBackupTypeITunes = 0,    ///< the whole device, in the manner of a desktop backup
    kBackupTypeWeChat = 2,    ///< WeChat's chats and files
    kBackupTypeWhatsApp = 4,  ///< WhatsApp's chats and files
    kBackupTypeSms = 8,       ///< messages and their attachments
    kBackupTypeContact = 16,  ///< the address book
    kBackupTypeICloud = 64,   ///< names a folder, selects no files
    kBackupTypeCache = 128    ///< names the cache folder only
};
