#include "Host/Archiver/ManifestMbdb.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <optional>
#include <system_error>

#include "Common/std/std_sha1.h"
#include "Host/Archiver/EntryAttributes.h"
#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"
#include "Host/Archiver/contents/Contents.h"

namespace krutein {
namespace {

constexpr mode_t kFileMode = 0644;
constexpr std::size_t kHeaderBytes = 6;
/// Of a record without any texts.
constexpr std::size_t kBareRecordBytes = 50;

struct FreeRecord {
    void operator()(mbdb_record_t* record) const { mbdb_record_free(record); }
};
using Record = std::unique_ptr<mbdb_record_t, FreeRecord>;

/// One without records. It comes out of an image that is nothing but a header, since there is no other way to
/// give a catalogue one whose memory is the library's.
Mbdb NewCatalogue() {
    std::array<unsigned char, kHeaderBytes> header{'m', 'b', 'd', 'b', 5, 0};
    Mbdb catalogue(mbdb_parse(header.data(), header.size()));
    if (catalogue == nullptr) throw std::bad_alloc();
    return catalogue;
}

/// The hash of the content is left out, as a catalogue may: nothing reads it, and to have it every database
/// would have to be read again after it was written.
Record NewRecord(const CatalogueEntry& entry) {
    Record record(mbdb_record_create());
    if (record == nullptr) throw std::bad_alloc();
    mbdb_record_init(record.get());
    mbdb_record_set_domain(record.get(), entry.domain.c_str());
    mbdb_record_set_path(record.get(), entry.path.c_str());
    mbdb_record_set_target(record.get(), entry.linkTarget.c_str());
    const EntryAttributes attributes = AttributesOf(entry);
    mbdb_record_set_mode(record.get(), attributes.mode);
    mbdb_record_set_inode(record.get(), attributes.inode);
    mbdb_record_set_uid(record.get(), attributes.user);
    mbdb_record_set_gid(record.get(), attributes.user);
    mbdb_record_set_time1(record.get(), attributes.time);
    mbdb_record_set_time2(record.get(), attributes.time);
    mbdb_record_set_time3(record.get(), attributes.time);
    mbdb_record_set_length(record.get(), static_cast<unsigned long long>(entry.size));
    mbdb_record_set_flag(record.get(), attributes.protectionClass);
    return record;
}

/// Texts that are too long are cut by the record and missing when memory runs out, both without a word.
bool IsWhole(const mbdb_record_t& record, const CatalogueEntry& entry) {
    return record.record_size ==
           kBareRecordBytes + entry.domain.size() + entry.path.size() + entry.linkTarget.size();
}

std::optional<EntryKind> KindOf(const mbdb_record_t& record) {
    if (S_ISREG(record.mode)) return EntryKind::kFile;
    if (S_ISDIR(record.mode)) return EntryKind::kFolder;
    if (S_ISLNK(record.mode)) return EntryKind::kLink;
    return std::nullopt;
}

/// \param text  null for an absent one, whatever its size.
std::string TextOf(const char* text, std::size_t size) {
    return text == nullptr ? std::string() : std::string(text, size);
}

/// How much of the image the records make up that could be read.
std::uint64_t BytesRead(const mbdb_t& catalogue) {
    std::uint64_t bytes = kHeaderBytes;
    for (const mbdb_record_t* const record : catalogue.records)
        bytes += record->record_size;
    return bytes;
}

}  // namespace

ManifestMbdbWriter::ManifestMbdbWriter(const std::string& path)
    : m_path(path), m_catalogue(NewCatalogue()), m_bytes(kHeaderBytes) {}

void ManifestMbdbWriter::Add(const CatalogueEntry& entry) {
    if (entry.kind == EntryKind::kFolder && !m_folders.insert(entry.fileId).second) return;
    Record record = NewRecord(entry);
    if (!IsWhole(*record, entry)) {
        throw ToolError(kToolFailed, "the catalogue has no room for " + entry.domain + "/" + entry.path);
    }
    m_bytes += record->record_size;
    if (m_path.empty()) return;
    const std::size_t before = m_catalogue->records.size();
    // Null tells nothing here: it is what a record that was taken over gives too.
    mbdb_insert_record(m_catalogue.get(), record.release(), MBDB_INSERT_ATTACH);
    if (m_catalogue->records.size() == before) throw std::bad_alloc();
}

std::int64_t ManifestMbdbWriter::Finish() {
    if (!m_path.empty()) Save();
    return m_bytes;
}

/// The file is created here, since the library would write to whatever is there already.
void ManifestMbdbWriter::Save() const {
    constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const UniqueFd file(open(m_path.c_str(), kNewFile, kFileMode));
    if (!file.IsOpen()) ThrowErrno("cannot create " + m_path, errno);
    try {
        SaveOver(file);
    } catch (...) {
        unlink(m_path.c_str());
        throw;
    }
}

/// \param file  the new one, open.
void ManifestMbdbWriter::SaveOver(const UniqueFd& file) const {
    errno = 0;
    const bool saved = mbdb_save(m_catalogue.get(), m_path.c_str());
    const int error = errno;
    ThrowIfStopped();
    struct stat info {};
    if (fstat(file.Get(), &info) != 0) ThrowErrno("cannot read " + m_path, errno);
    // The library does not notice when a write fails. What it wrote after that stands where the lost piece
    // should, so that every loss makes the file shorter.
    if (!saved || info.st_size != m_bytes) ThrowErrno("cannot write " + m_path, error == 0 ? ENOSPC : error);
}

ManifestMbdbReader::ManifestMbdbReader(const std::string& path, Selection selection)
    : m_path(path), m_selection(selection), m_catalogue(Open()) {}

int ManifestMbdbReader::CountFiles() {
    int files = 0;
    for (const mbdb_record_t* const record : m_catalogue->records) {
        const CatalogueEntry entry = EntryOf(*record);
        if (entry.kind == EntryKind::kFile && IsWanted(entry)) ++files;
    }
    return files;
}

bool ManifestMbdbReader::NextFile(CatalogueEntry& entry) {
    while (m_next < m_catalogue->records.size()) {
        entry = EntryOf(*m_catalogue->records[m_next++]);
        if (entry.kind != EntryKind::kFile || !IsWanted(entry)) continue;
        entry.fileId = STD_FILE_CalcDomainPathSha1A(entry.domain, entry.path);
        return true;
    }
    return false;
}

/// A catalogue that was cut between two records cannot be told from one that never had more; whoever knows
/// the files of the backup can (StoredBackup).
Mbdb ManifestMbdbReader::Open() const {
    struct stat info {};
    if (stat(m_path.c_str(), &info) != 0) ThrowDamaged(std::generic_category().message(errno));
    // Of a longer one the library would read the beginning only.
    if (info.st_size > std::numeric_limits<unsigned>::max()) ThrowDamaged("it is too long");
    Mbdb catalogue(mbdb_open(m_path.c_str()));
    ThrowIfStopped();
    if (catalogue == nullptr) ThrowDamaged("it is no catalogue");
    const std::uint64_t read = BytesRead(*catalogue);
    if (read != static_cast<std::uint64_t>(info.st_size)) {
        ThrowDamaged("only " + std::to_string(read) + " of its " + std::to_string(info.st_size) +
                     " bytes can be read");
    }
    return catalogue;
}

bool ManifestMbdbReader::IsWanted(const CatalogueEntry& entry) const {
    constexpr std::size_t kFolderBytes = sizeof kSettingsFolder - 1;
    return m_selection == Selection::kAllFiles ||
           (entry.domain == kHomeDomain && entry.path.compare(0, kFolderBytes, kSettingsFolder) == 0);
}

/// Without the file ID, which takes time.
CatalogueEntry ManifestMbdbReader::EntryOf(const mbdb_record_t& record) const {
    CatalogueEntry entry;
    entry.domain = TextOf(record.domain, record.domain_size);
    entry.path = TextOf(record.path, record.path_size);
    entry.linkTarget = TextOf(record.target, record.target_size);
    const std::optional<EntryKind> kind = KindOf(record);
    if (!kind) ThrowDamaged(entry.domain + "/" + entry.path + " is neither file, folder nor link");
    entry.kind = *kind;
    if (record.length > std::numeric_limits<std::int64_t>::max()) {
        ThrowDamaged("it does not tell the size of " + entry.domain + "/" + entry.path);
    }
    entry.size = static_cast<std::int64_t>(record.length);
    return entry;
}

void ManifestMbdbReader::ThrowDamaged(const std::string& reason) const {
    throw ToolError(kToolBackupDamaged, m_path + ": " + reason);
}

}  // namespace krutein
