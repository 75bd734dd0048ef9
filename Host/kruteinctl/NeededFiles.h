#pragma once

#include <vector>

#include "Host/BackupFormat/FileId.h"
#include "Host/kruteinctl/BackupTarget.h"

/// The files of a backup that some types need, as the library keeps them.
class NeededFiles {
 public:
    /// \throws Failure (not configured, encrypted); krutein::BackupDamage when the catalogue cannot be read.
    NeededFiles(const BackupTarget& backup, int type, const krutein::Interrupt& interrupt);

    bool Has(const krutein::FileId& id) const;

 private:
    void AskManifestDb(const BackupTarget& backup, int type, const krutein::Interrupt& interrupt);
    void AskManifestMbdb(const BackupTarget& backup, int type, const krutein::Interrupt& interrupt);

    std::vector<krutein::FileId> m_ids;  ///< sorted
};
