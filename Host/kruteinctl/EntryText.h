#pragma once

#include <string>

#include "Host/BackupFormat/BackupCatalogue.h"

// What a catalogue's entry looks like in lines and objects.

/// "HomeDomain/Library/SMS/sms.db", printable.
std::string NameOf(const krutein::BackupEntry& entry);

/// "-rw-r--r--"; '?' for what the catalogue does not tell.
std::string ModeText(const krutein::BackupEntry& entry);

/// "file", "folder", "link" or "unknown".
const char* WordOf(krutein::BackupEntry::Kind kind);
