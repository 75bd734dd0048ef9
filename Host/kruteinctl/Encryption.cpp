#include "Host/kruteinctl/Encryption.h"

#include <plist/plist.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

namespace {

struct FreePlist {
    void operator()(void* node) const { plist_free(node); }
};

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool PlistSaysSo(const std::string& path) {
    const std::string content = ContentOf(path);
    plist_t root = nullptr;
    plist_from_memory(content.data(), static_cast<std::uint32_t>(content.size()), &root);
    const std::unique_ptr<void, FreePlist> owner(root);
    plist_t const value = root == nullptr || plist_get_node_type(root) != PLIST_DICT
                              ? nullptr
                              : plist_dict_get_item(root, "IsEncrypted");
    std::uint8_t encrypted = 0;
    if (value != nullptr && plist_get_node_type(value) == PLIST_BOOLEAN)
        plist_get_bool_val(value, &encrypted);
    return encrypted != 0;
}

bool HasContentThatIsNoDatabase(const std::string& path) {
    static constexpr char kHeader[] = "SQLite format 3";
    char begin[sizeof kHeader] = {};
    std::ifstream file(path, std::ios::binary);
    file.read(begin, sizeof begin);
    return file.gcount() > 0 && std::memcmp(begin, kHeader, sizeof kHeader) != 0;
}

}  // namespace

bool IsEncrypted(const std::string& backup) {
    return PlistSaysSo(backup + "/Manifest.plist") || HasContentThatIsNoDatabase(backup + "/Manifest.db");
}
