#include "Host/Archiver/Catalogue.h"

#include "Host/Archiver/ManifestDb.h"
#include "Host/Archiver/ManifestMbdb.h"

namespace krutein {

std::unique_ptr<CatalogueWriter> CreateCatalogue(BackupLayout layout, const std::string& path) {
    if (layout == BackupLayout::kOlder) return std::make_unique<ManifestMbdbWriter>(path);
    return std::make_unique<ManifestDbWriter>(path);
}

std::unique_ptr<CatalogueReader> OpenCatalogue(BackupLayout layout, const std::string& path,
                                               Selection selection) {
    if (layout == BackupLayout::kOlder) return std::make_unique<ManifestMbdbReader>(path, selection);
    return std::make_unique<ManifestDbReader>(path, selection);
}

}  // namespace krutein
