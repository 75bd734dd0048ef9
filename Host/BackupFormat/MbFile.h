#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace krutein {

/// What a Manifest.db says of a single file, folder or link in the column "file": an object of the class
/// MBFile as a keyed archive, which is a binary property list.
struct MbFile {
    std::int64_t size = 0;  ///< in bytes
    unsigned mode = 0;      ///< Unix type and permission bits; 0 when it does not tell
};

/// \param archive  may be any bytes.
/// \return nothing when it is no such archive or tells no size.
std::optional<MbFile> ReadMbFile(std::string_view archive);

}  // namespace krutein
