#include "Host/BackupFormat/MbFile.h"

#include "Host/BackupFormat/BinaryPlistReader.h"

namespace krutein {
namespace {

constexpr std::int64_t kMaxMode = 0xFFFF;

using Object = BinaryPlistReader::Object;

/// The archive's root object: a dictionary of what is told of the file.
std::optional<Object> RootOf(const BinaryPlistReader& archive) {
    const auto top = archive.Member(archive.Top(), "$top");
    const auto objects = archive.Member(archive.Top(), "$objects");
    if (!top || !objects) return std::nullopt;
    const auto root = archive.Member(*top, "root");
    const auto uid = root ? archive.Uid(*root) : std::nullopt;
    return uid ? archive.Element(*objects, *uid) : std::nullopt;
}

std::optional<std::int64_t> NumberIn(const BinaryPlistReader& archive, Object dictionary, const char* key) {
    const auto member = archive.Member(dictionary, key);
    return member ? archive.Number(*member) : std::nullopt;
}

}  // namespace

std::optional<MbFile> ReadMbFile(std::string_view archive) {
    const auto plist = BinaryPlistReader::Open(archive);
    const auto root = plist ? RootOf(*plist) : std::nullopt;
    if (!root) return std::nullopt;
    const auto size = NumberIn(*plist, *root, "Size");
    const auto mode = NumberIn(*plist, *root, "Mode").value_or(0);
    if (!size) return std::nullopt;
    return MbFile{*size, mode <= kMaxMode ? static_cast<unsigned>(mode) : 0};
}

}  // namespace krutein
