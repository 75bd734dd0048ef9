#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Host/Archiver/BackupPlists.h"
#include "Host/Archiver/Catalogue.h"
#include "Host/UniqueFd.h"

namespace krutein {

/// A backup that is there already. Somebody may have tampered with it: nothing outside its folder is ever
/// read, nothing is written, and what is not as it should be is an error with kToolBackupDamaged.
class StoredBackup {
 public:
    /// \throws ToolError with kToolNoBackup when there is no such folder
    explicit StoredBackup(const std::string& path);

    /// False for one that was interrupted, and for a folder that holds something else.
    bool IsFinished() const;
    BackupFacts Facts() const;
    std::unique_ptr<CatalogueReader> OpenCatalogue(Selection selection);

    /// Reads a file, which the catalogue that was opened lists, from beginning to end. \throws ToolError,
    /// Stopped
    void ReadFile(const CatalogueEntry& entry);

 private:
    bool HasCatalogue(BackupLayout layout) const;
    BackupLayout FindLayout() const;
    void RefuseUnlisted(int listed) const;
    UniqueFd OpenFile(const std::string& place) const;
    std::string ReadDescription(const std::string& name) const;

    std::string m_path;
    UniqueFd m_folder;
    BackupLayout m_layout = BackupLayout::kNewer;  ///< from OpenCatalogue on
    std::vector<char> m_chunk;
};

}  // namespace krutein
