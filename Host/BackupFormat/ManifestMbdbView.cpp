#include "Host/BackupFormat/ManifestMbdbView.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <system_error>

namespace krutein {
namespace {

constexpr std::uint64_t kHeaderBytes = 6;

BackupEntry::Kind KindOf(unsigned mode) {
    if (S_ISREG(mode)) return BackupEntry::Kind::kFile;
    if (S_ISDIR(mode)) return BackupEntry::Kind::kFolder;
    return S_ISLNK(mode) ? BackupEntry::Kind::kLink : BackupEntry::Kind::kUnknown;
}

/// The library makes file IDs of texts up to their NUL.
std::string TextOf(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

void CheckIsFile(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) {
        if (errno == ENOENT) throw BackupDamage(path + " is missing");
        throw std::system_error(errno, std::generic_category(), "cannot read " + path);
    }
    if (!S_ISREG(info.st_mode)) throw BackupDamage(path + " is no file");
    if (info.st_size > std::numeric_limits<std::uint32_t>::max()) {
        throw BackupDamage(path + " is longer than a catalogue can be");
    }
    if (access(path.c_str(), R_OK) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot read " + path);
    }
}

}  // namespace

ManifestMbdbView::ManifestMbdbView(const std::string& path, const Interrupt& interrupt)
    : m_path(path), m_interrupt(interrupt), m_bytes(kHeaderBytes) {
    CheckIsFile(path);
    m_mbdb.reset(mbdb_open(path.c_str()));
    if (m_mbdb == nullptr) throw BackupDamage(path + " is no catalogue");
}

bool ManifestMbdbView::Next(BackupEntry& entry) {
    m_interrupt.Check();
    if (m_next == m_mbdb->records.size()) {
        if (m_bytes == m_mbdb->size) return false;
        throw BackupDamage(m_path + " is damaged from its byte " + std::to_string(m_bytes) + " on, after " +
                           std::to_string(m_next) + " records");
    }
    const mbdb_record_t& record = *m_mbdb->records[m_next++];
    m_bytes += record.record_size;
    entry.domain = TextOf(record.domain);
    entry.path = TextOf(record.path);
    entry.id = FileId::Of(entry.domain, entry.path);
    entry.fileId = entry.id->Text();
    entry.kind = KindOf(record.mode);
    entry.mode = record.mode;
    entry.bytes = record.length;
    return true;
}

}  // namespace krutein
