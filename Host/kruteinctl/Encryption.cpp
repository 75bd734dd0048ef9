#include "Host/kruteinctl/Encryption.h"

#include <plist/plist.h>
#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <optional>

#include "Host/BackupFormat/BinaryPlistReader.h"
#include "Host/BackupFormat/SmallFile.h"

namespace {

constexpr char kKey[] = "IsEncrypted";
/// It lists the apps of the device, some hundred bytes each.
constexpr std::size_t kMaxManifestBytes = std::size_t{16} * 1024 * 1024;

struct FreePlist {
    void operator()(void* node) const { plist_free(node); }
};

std::optional<bool> InBinary(const std::string& content) {
    const auto plist = krutein::BinaryPlistReader::Open(content);
    const auto value = plist ? plist->Member(plist->Top(), kKey) : std::nullopt;
    return value ? plist->Bool(*value) : std::nullopt;
}

std::optional<bool> InXml(const std::string& content) {
    plist_t root = nullptr;
    plist_from_xml(content.data(), static_cast<std::uint32_t>(content.size()), &root);
    const std::unique_ptr<void, FreePlist> owner(root);
    if (root == nullptr || plist_get_node_type(root) != PLIST_DICT) return std::nullopt;
    plist_t const value = plist_dict_get_item(root, kKey);
    if (value == nullptr || plist_get_node_type(value) != PLIST_BOOLEAN) return std::nullopt;
    std::uint8_t encrypted = 0;
    plist_get_bool_val(value, &encrypted);
    return encrypted != 0;
}

/// \return nothing when the plist does not tell.
std::optional<bool> ManifestSays(const std::string& path) {
    const std::string content = krutein::ReadSmallFile(path, kMaxManifestBytes);
    if (content.empty()) return std::nullopt;
    return content.front() == '<' ? InXml(content) : InBinary(content);
}

/// \return false for the empty file, and for what cannot be read.
bool HasContentThatIsNoDatabase(const std::string& path) {
    static constexpr char kHeader[] = "SQLite format 3";
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
    char begin[sizeof kHeader] = {};
    std::ifstream file(path, std::ios::binary);
    file.read(begin, sizeof begin);
    return file.gcount() > 0 && std::memcmp(begin, kHeader, sizeof kHeader) != 0;
}

}  // namespace

bool IsEncrypted(const std::string& backup) {
    if (const std::optional<bool> told = ManifestSays(backup + "/Manifest.plist")) return *told;
    return HasContentThatIsNoDatabase(backup + "/Manifest.db");
}
