#include "Host/kruteinctl/EntryText.h"

#include "Host/kruteinctl/Text.h"

using Kind = krutein::BackupEntry::Kind;

namespace {

constexpr unsigned kHighestPermission = 0400;

char LetterOf(Kind kind) {
    switch (kind) {
        case Kind::kFile:
            return '-';
        case Kind::kFolder:
            return 'd';
        case Kind::kLink:
            return 'l';
        default:
            return '?';
    }
}

}  // namespace

std::string NameOf(const krutein::BackupEntry& entry) {
    return Printable(entry.path.empty() ? entry.domain : entry.domain + "/" + entry.path);
}

std::string ModeText(const krutein::BackupEntry& entry) {
    std::string text(1, LetterOf(entry.kind));
    if (entry.mode == 0) return text + "?????????";
    unsigned permission = kHighestPermission;
    for (const char letter : {'r', 'w', 'x', 'r', 'w', 'x', 'r', 'w', 'x'}) {
        text.push_back((entry.mode & permission) != 0 ? letter : '-');
        permission >>= 1;
    }
    return text;
}

const char* WordOf(Kind kind) {
    switch (kind) {
        case Kind::kFile:
            return "file";
        case Kind::kFolder:
            return "folder";
        case Kind::kLink:
            return "link";
        default:
            return "unknown";
    }
}
