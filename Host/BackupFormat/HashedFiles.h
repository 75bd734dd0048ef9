#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Host/BackupFormat/FileId.h"
#include "Host/BackupFormat/Interrupt.h"

namespace krutein {

/// Something in a backup's folder that is named like a file ID.
struct HashedFile {
    enum class Kind { kFile, kFolder, kLink, kOther };

    FileId id;
    Kind kind = Kind::kFile;
    bool inPlace = false;  ///< in the folder where a file of this ID belongs
    std::uint64_t bytes = 0;
    std::size_t folder = 0;  ///< see HashedFiles::PathOf
    std::string spelling;    ///< of the name; "" when it is in lower case
};

/// What lies in a backup's folder under the names of file IDs, in any spelling, as it was when the object was
/// made. Links are seen and not followed. One pass over the folder makes every later question cheap.
class HashedFiles {
 public:
    enum class Where {
        kPlaces,   ///< only where files of the layout belong: the folder may hold anything else besides
        kAnywhere  ///< at any depth
    };

    /// \param backup  the backup's folder; itself it may be reached through links.
    /// \throws Interrupt::Raised; std::system_error when the folder itself cannot be read.
    HashedFiles(const std::string& backup, BackupLayout layout, Where where, const Interrupt& interrupt);

    /// In the order of their IDs.
    const std::vector<HashedFile>& All() const { return m_files; }

    /// What lies where the file of this ID belongs; a file rather than anything else. \return null for
    /// nothing.
    const HashedFile* Find(const FileId& id) const;

    /// Its path in the backup's folder.
    std::string PathOf(const HashedFile& file) const;

    /// Folders below the backup's that could not be read, each with the reason.
    const std::vector<std::string>& Unreadable() const { return m_unreadable; }

 private:
    void List(int backup, std::size_t folder, const Interrupt& interrupt);
    void Take(int parent, std::size_t folder, const std::string& name, bool mayBeFolder);
    bool IsOfInterest(std::size_t parent, const std::string& name) const;

    BackupLayout m_layout;
    Where m_where;
    std::vector<std::string> m_folders;  ///< paths of all folders in the backup's; "" for its own
    std::vector<HashedFile> m_files;
    std::vector<std::string> m_unreadable;
};

}  // namespace krutein
