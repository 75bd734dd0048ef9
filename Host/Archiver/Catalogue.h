#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Host/Archiver/Layout.h"

/// A backup's list of what was on the device. How it is kept depends on the backup's layout; these are its
/// two sides for whoever writes or reads a backup.
namespace krutein {

enum class EntryKind { kFile = 1, kFolder = 2, kLink = 4 };

struct CatalogueEntry {
    EntryKind kind = EntryKind::kFile;
    std::string fileId;
    std::string domain;
    std::string path;        ///< relative; "" for the domain's own folder
    std::string linkTarget;  ///< of links
    std::int64_t size = 0;   ///< of files, in bytes
};

/// Its functions throw ToolError and Stopped.
class CatalogueWriter {
 public:
    virtual ~CatalogueWriter() = default;

    /// Folders may be added again and again: they are listed once.
    virtual void Add(const CatalogueEntry& entry) = 0;

    /// Without it there will be no catalogue. \return its size in bytes.
    virtual std::int64_t Finish() = 0;
};

/// Which of a catalogue's files are of interest.
enum class Selection { kAllFiles, kSettings };

/// Its functions throw ToolError, with kToolBackupDamaged for whatever the catalogue should not hold, and
/// Stopped.
class CatalogueReader {
 public:
    virtual ~CatalogueReader() = default;

    virtual int CountFiles() = 0;

    /// \param entry  receives the next file: its ID, a name without any path in it, is safe to use.
    /// \return false at the end.
    virtual bool NextFile(CatalogueEntry& entry) = 0;
};

/// Begins the catalogue of a new backup.
/// \param path  of the file, which must not exist; "" for one that is thrown away at the end.
std::unique_ptr<CatalogueWriter> CreateCatalogue(BackupLayout layout, const std::string& path);

std::unique_ptr<CatalogueReader> OpenCatalogue(BackupLayout layout, const std::string& path,
                                               Selection selection);

}  // namespace krutein
