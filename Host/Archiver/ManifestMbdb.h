#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "Host/Archiver/Catalogue.h"
#include "Host/UniqueFd.h"
#include "Module/BackupLib/mbdb/mbdb.h"

/// The catalogue of devices up to version 9: Manifest.mbdb, a file with a record for each file. It is the
/// library's; all its records are in memory.
namespace krutein {

struct FreeMbdb {
    void operator()(mbdb_t* catalogue) const { mbdb_free(catalogue); }
};
using Mbdb = std::unique_ptr<mbdb_t, FreeMbdb>;

class ManifestMbdbWriter : public CatalogueWriter {
 public:
    /// \param path  as for CreateCatalogue.
    explicit ManifestMbdbWriter(const std::string& path);

    void Add(const CatalogueEntry& entry) override;
    std::int64_t Finish() override;

 private:
    void Save() const;
    void SaveOver(const UniqueFd& file) const;

    std::string m_path;
    Mbdb m_catalogue;
    std::set<std::string> m_folders;  ///< the IDs of those that are listed
    std::int64_t m_bytes;             ///< of the file
};

class ManifestMbdbReader : public CatalogueReader {
 public:
    ManifestMbdbReader(const std::string& path, Selection selection);

    int CountFiles() override;
    bool NextFile(CatalogueEntry& entry) override;

 private:
    Mbdb Open() const;
    bool IsWanted(const CatalogueEntry& entry) const;
    CatalogueEntry EntryOf(const mbdb_record_t& record) const;
    [[noreturn]] void ThrowDamaged(const std::string& reason) const;

    std::string m_path;
    Selection m_selection;
    Mbdb m_catalogue;
    std::size_t m_next = 0;
};

}  // namespace krutein
