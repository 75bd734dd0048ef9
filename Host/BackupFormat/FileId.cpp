#include "Host/BackupFormat/FileId.h"

#include "Common/std/std_sha1.h"

namespace krutein {
namespace {

/// Digits of a file ID that name its folder in the newer layout.
constexpr std::size_t kFolderDigits = 2;

int ValueOf(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

}  // namespace

std::optional<FileId> FileId::Parse(std::string_view text) {
    if (text.size() != kDigits) return std::nullopt;
    FileId id;
    for (std::size_t i = 0; i < id.m_bytes.size(); ++i) {
        const int high = ValueOf(text[2 * i]);
        const int low = ValueOf(text[2 * i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        id.m_bytes[i] = static_cast<unsigned char>(high * 16 + low);
    }
    return id;
}

FileId FileId::Of(const std::string& domain, const std::string& path) {
    return Parse(STD_FILE_CalcDomainPathSha1A(domain, path)).value_or(FileId());
}

std::string FileId::Text() const {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string text;
    text.reserve(kDigits);
    for (const unsigned char byte : m_bytes) {
        text.push_back(kHex[byte >> 4]);
        text.push_back(kHex[byte & 0x0F]);
    }
    return text;
}

std::string FileId::FolderIn(BackupLayout layout) const {
    return layout == BackupLayout::kNewer ? Text().substr(0, kFolderDigits) : std::string();
}

std::string FileId::PlaceIn(BackupLayout layout) const {
    const std::string folder = FolderIn(layout);
    return folder.empty() ? Text() : folder + "/" + Text();
}

}  // namespace krutein
