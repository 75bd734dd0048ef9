#include "Host/BackupFormat/SqliteUri.h"

namespace krutein {

std::string SqliteUri(const std::string& path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    // With an empty authority, so that a path that begins with "//" is not taken for one.
    std::string uri = !path.empty() && path.front() == '/' ? "file://" : "file:";
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            const auto byte = static_cast<unsigned char>(c);
            uri.append({'%', kHex[byte >> 4], kHex[byte & 0x0F]});
        } else {
            uri.push_back(c);
        }
    }
    return uri;
}

}  // namespace krutein
