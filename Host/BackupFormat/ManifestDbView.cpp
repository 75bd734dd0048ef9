#include "Host/BackupFormat/ManifestDbView.h"

#include "Host/BackupFormat/MbFile.h"

namespace krutein {
namespace {

constexpr char kRows[] = "SELECT fileID, domain, relativePath, flags, file FROM Files";

BackupEntry::Kind KindOf(std::int64_t flags) {
    switch (flags) {
        case 1:
            return BackupEntry::Kind::kFile;
        case 2:
            return BackupEntry::Kind::kFolder;
        case 4:
            return BackupEntry::Kind::kLink;
        default:
            return BackupEntry::Kind::kUnknown;
    }
}

}  // namespace

ManifestDbView::ManifestDbView(const std::string& path, const Interrupt& interrupt)
    : m_database(SqliteFiles::At(path), interrupt), m_rows(m_database.Select(kRows)) {}

bool ManifestDbView::Next(BackupEntry& entry) {
    if (!m_rows.Next()) return false;
    entry.fileId = m_rows.Text(0);
    entry.id = FileId::Parse(entry.fileId);
    entry.domain = m_rows.Text(1);
    entry.path = m_rows.Text(2);
    entry.kind = KindOf(m_rows.Number(3));
    const std::optional<MbFile> file = ReadMbFile(m_rows.Bytes(4));
    entry.bytes.reset();
    if (file) entry.bytes = static_cast<std::uint64_t>(file->size);
    entry.mode = file ? file->mode : 0;
    return true;
}

}  // namespace krutein
