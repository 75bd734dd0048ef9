#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Host/Archiver/Catalogue.h"
#include "Host/Archiver/Database.h"

/// The catalogue of devices from version 10 on: Manifest.db, an SQLite database with a row for each file.
namespace krutein {

class ManifestDbWriter : public CatalogueWriter {
 public:
    /// \param path  as for CreateCatalogue.
    explicit ManifestDbWriter(const std::string& path);

    void Add(const CatalogueEntry& entry) override;
    std::int64_t Finish() override;

 private:
    Database m_database;
    std::optional<Statement> m_insert;
};

class ManifestDbReader : public CatalogueReader {
 public:
    ManifestDbReader(const std::string& path, Selection selection);

    int CountFiles() override;
    bool NextFile(CatalogueEntry& entry) override;

 private:
    [[noreturn]] void ThrowDamaged(const std::string& reason) const;

    std::string m_path;
    Database m_database;
    std::string m_where;
    Statement m_files;
};

}  // namespace krutein
