#pragma once

#include <cstdint>

#include "Host/Archiver/Catalogue.h"

namespace krutein {

/// What a catalogue tells of an entry besides its name and size. It is made up, always the same for the same
/// entry.
struct EntryAttributes {
    std::uint16_t mode = 0;  ///< Unix type and permission bits
    std::uint32_t user = 0;  ///< and group
    std::uint32_t inode = 0;
    std::uint32_t time = 0;  ///< of every kind, in seconds since 1970
    std::uint8_t protectionClass = 0;
};

EntryAttributes AttributesOf(const CatalogueEntry& entry);

}  // namespace krutein
