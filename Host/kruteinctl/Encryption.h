#pragma once

#include <string>

/// True when the backup is encrypted, as devices with a backup password make it: its Manifest.plist says so,
/// or it does not tell and Manifest.db has content that is no database.
bool IsEncrypted(const std::string& backup);

constexpr char kEncryptedText[] =
    "the backup is encrypted: the device has a backup password, and what it sends cannot be looked into. "
    "Take the password off the device, or make a full backup";
