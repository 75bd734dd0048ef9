#pragma once

#include <array>
#include <string>
#include <vector>

#include "Host/Archiver/FileStore.h"
#include "Host/Archiver/Layout.h"
#include "Host/UniqueFd.h"

namespace krutein {

/// A folder that a backup is written to. What was begun and not finished, because of an error or a stop, is
/// removed; the files before it stay.
class BackupFolder : public FileStore {
 public:
    /// Opens the folder, or creates it and the ones above it. Nothing in it is touched.
    /// \throws ToolError also when it holds something that is no backup
    BackupFolder(const std::string& path, BackupLayout layout);

    /// Removes an earlier backup. From the first moment on the folder counts as an unfinished backup, so that
    /// also after an interruption here the next run takes it for one.
    /// \param status  the status file of an unfinished backup.
    void Replace(const std::string& status);

    void PutFile(const std::string& fileId, FileBytes bytes) override;
    std::string DatabasePath(const std::string& fileId) override;
    std::string CataloguePath() override;
    void PutDescription(const std::string& name, const std::string& content) override;

 private:
    static constexpr std::size_t kFolders = 256;

    void RefuseForeign() const;
    void EnsureFolderFor(const std::string& fileId);
    void Write(const std::string& place, FileBytes& bytes);
    void Copy(FileBytes& bytes, UniqueFd& file, const std::string& place);
    std::string PathOf(const std::string& place) const { return m_path + "/" + place; }

    std::string m_path;
    BackupLayout m_layout;
    UniqueFd m_folder;
    std::array<bool, kFolders> m_hasFolder{};  ///< for the first two characters of file IDs
    std::vector<char> m_chunk;
};

}  // namespace krutein
