#pragma once

#include <memory>
#include <string>

#include "Host/BackupFormat/BackupCatalogue.h"
#include "Module/BackupLib/mbdb/mbdb.h"

namespace krutein {

/// The catalogue of the older layout: a file of records, which is held in memory as a whole.
class ManifestMbdbView : public BackupCatalogue {
 public:
    ManifestMbdbView(const std::string& path, const Interrupt& interrupt);

    bool Next(BackupEntry& entry) override;

 private:
    struct FreeCatalogue {
        void operator()(mbdb_t* mbdb) const { mbdb_free(mbdb); }
    };

    std::string m_path;
    const Interrupt& m_interrupt;
    std::unique_ptr<mbdb_t, FreeCatalogue> m_mbdb;
    std::size_t m_next = 0;
    std::uint64_t m_bytes;  ///< of the header and the records before the next
};

}  // namespace krutein
