#pragma once

#include <string>

#include "Host/Archiver/Catalogue.h"

namespace krutein {

/// What a Manifest.db says of an entry, as the bytes of its column "file": an object of the class MBFile as a
/// keyed archive (Host/BackupFormat/MbFile.h reads it).
std::string EncodeMbFile(const CatalogueEntry& entry);

}  // namespace krutein
