#pragma once

#include <string>
#include <vector>

#include "Host/BackupFormat/FileId.h"
#include "Host/kruteinctl/BackupTarget.h"

/// The files of a backup that some types need, as the library keeps them.
class NeededFiles {
 public:
    /// \throws Failure (not configured, encrypted); krutein::BackupDamage when the catalogue cannot be read.
    NeededFiles(const BackupTarget& backup, int type, const krutein::Interrupt& interrupt);

    /// \param entry  of that backup's catalogue, with an ID.
    bool Has(const krutein::BackupEntry& entry) const;

 private:
    void AskManifestDb(const BackupTarget& backup, int type, const krutein::Interrupt& interrupt);

    std::vector<krutein::FileId> m_ids;  ///< sorted
    // In the older layout instead of IDs: parts of the domains and paths, in lower case.
    std::vector<std::string> m_domains;
    std::vector<std::string> m_paths;
};
