#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Host/Archiver/Catalogue.h"

/// What a catalogue says of a single file: an object of the class MBFile as a keyed archive, which is a
/// binary property list.
namespace krutein {

std::string EncodeMbFile(const CatalogueEntry& entry);

/// The size of the file.
/// \param archive  may be any bytes.
/// \return nothing when it is no such archive.
std::optional<std::int64_t> SizeInMbFile(std::string_view archive);

}  // namespace krutein
