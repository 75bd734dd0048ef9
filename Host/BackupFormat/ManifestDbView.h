#pragma once

#include <string>

#include "Host/BackupFormat/BackupCatalogue.h"
#include "Host/BackupFormat/SqliteView.h"

namespace krutein {

/// The catalogue of the newer layout: a table of an SQLite database, row by row.
class ManifestDbView : public BackupCatalogue {
 public:
    ManifestDbView(const std::string& path, const Interrupt& interrupt);

    bool Next(BackupEntry& entry) override;

 private:
    SqliteView m_database;
    SqliteRows m_rows;
};

}  // namespace krutein
