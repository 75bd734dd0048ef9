#include "Host/BackupFormat/BackupCatalogue.h"

#include "Host/BackupFormat/ManifestDbView.h"
#include "Host/BackupFormat/ManifestMbdbView.h"

namespace krutein {

std::unique_ptr<BackupCatalogue> BackupCatalogue::Open(const std::string& path, BackupLayout layout,
                                                       const Interrupt& interrupt) {
    if (layout == BackupLayout::kOlder) return std::make_unique<ManifestMbdbView>(path, interrupt);
    return std::make_unique<ManifestDbView>(path, interrupt);
}

}  // namespace krutein
