#include "Host/Archiver/ManifestDb.h"

#include <limits>

#include "Host/Archiver/MbFileArchive.h"
#include "Host/Archiver/ToolError.h"
#include "Host/Archiver/contents/Contents.h"
#include "Host/BackupFormat/MbFile.h"

namespace krutein {
namespace {

constexpr char kTables[] =
    "CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER, file BLOB);"
    "CREATE TABLE Properties (key TEXT PRIMARY KEY, value BLOB);";

/// Made when all rows are there, which takes far less time.
constexpr char kIndexes[] =
    "CREATE INDEX FilesDomainIdx ON Files (domain);"
    "CREATE INDEX FilesRelativePathIdx ON Files (relativePath);";

/// Chooses rows, of files and others, for a selection.
std::string Where(Selection selection) {
    if (selection == Selection::kAllFiles) return " WHERE true";
    // All paths in the folder; '0' is the character after '/'.
    const std::string folder = kSettingsFolder;
    const std::string behind = folder.substr(0, folder.size() - 1) + "0";
    return std::string(" WHERE domain = '") + kHomeDomain + "' AND relativePath >= '" + folder +
           "' AND relativePath < '" + behind + "'";
}

}  // namespace

ManifestDbWriter::ManifestDbWriter(const std::string& path) : m_database(Database::Create(path)) {
    m_database.Execute(kTables);
    m_insert.emplace(m_database.Prepare("INSERT OR IGNORE INTO Files VALUES (?, ?, ?, ?, ?)"));
}

void ManifestDbWriter::Add(const CatalogueEntry& entry) {
    const std::string file = EncodeMbFile(entry);
    m_insert->Run(entry.fileId, entry.domain, entry.path, static_cast<std::int64_t>(entry.kind),
                  Statement::Blob{file});
}

std::int64_t ManifestDbWriter::Finish() {
    m_insert.reset();
    m_database.Execute(kIndexes);
    return m_database.Finish();
}

ManifestDbReader::ManifestDbReader(const std::string& path, Selection selection)
    : m_path(path),
      m_database(Database::OpenToRead(path)),
      m_where(Where(selection)),
      m_files(m_database.Prepare("SELECT fileID, domain, relativePath, file FROM Files" + m_where +
                                 " AND flags = 1")) {}

int ManifestDbReader::CountFiles() {
    Statement count = m_database.Prepare(
        "SELECT count(*) FILTER (WHERE flags = 1), count(*) FILTER (WHERE flags IN (1, 2, 4)), count(*) "
        "FROM Files" +
        m_where);
    count.Step();
    if (count.Number(1) != count.Number(2))
        ThrowDamaged("it has rows that are neither file, folder nor link");
    if (count.Number(0) > std::numeric_limits<int>::max()) ThrowDamaged("it has too many rows");
    return static_cast<int>(count.Number(0));
}

bool ManifestDbReader::NextFile(CatalogueEntry& entry) {
    if (!m_files.Step()) return false;
    const std::string_view fileId = m_files.Bytes(0);
    if (!m_files.IsText(0) || !IsFileId(fileId)) ThrowDamaged("'" + std::string(fileId) + "' is no file ID");
    entry.kind = EntryKind::kFile;
    entry.fileId = fileId;
    entry.domain = m_files.Bytes(1);
    entry.path = m_files.Bytes(2);
    const auto file = m_files.IsBlob(3) ? ReadMbFile(m_files.Bytes(3)) : std::nullopt;
    if (!file) ThrowDamaged("it does not tell the size of " + entry.domain + "/" + entry.path);
    entry.size = file->size;
    return true;
}

void ManifestDbReader::ThrowDamaged(const std::string& reason) const {
    throw ToolError(kToolBackupDamaged, m_path + ": " + reason);
}

}  // namespace krutein
