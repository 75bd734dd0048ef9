#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Host/BackupFormat/BackupDamage.h"
#include "Host/BackupFormat/FileId.h"
#include "Host/BackupFormat/Interrupt.h"

namespace krutein {

/// What a backup's catalogue says of one file, folder or link of the device. Texts are as they stand in it.
struct BackupEntry {
    enum class Kind { kFile, kFolder, kLink, kUnknown };

    Kind kind = Kind::kUnknown;
    std::string fileId;        ///< may be anything in a hostile catalogue
    std::optional<FileId> id;  ///< nothing when that is none
    std::string domain;
    std::string path;                    ///< relative; "" for the domain's own folder
    std::optional<std::uint64_t> bytes;  ///< nothing when the catalogue does not tell
    unsigned mode = 0;  ///< Unix type and permission bits; 0 when the catalogue does not tell
};

/// A backup's list of what was on the device, in the order of the catalogue.
class BackupCatalogue {
 public:
    virtual ~BackupCatalogue() = default;

    /// \param entry  receives the next entry.
    /// \return false at the end.
    /// \throws BackupDamage when the rest of the catalogue cannot be read; Interrupt::Raised.
    virtual bool Next(BackupEntry& entry) = 0;

    /// \param path       of the Manifest.db or Manifest.mbdb. No link is followed, neither in the path nor at
    ///                   its end.
    /// \param interrupt  must outlive the catalogue.
    /// \throws BackupDamage when the file is missing or no catalogue; std::runtime_error when the system does
    ///         not let it be read.
    static std::unique_ptr<BackupCatalogue> Open(const std::string& path, BackupLayout layout,
                                                 const Interrupt& interrupt);
};

}  // namespace krutein
