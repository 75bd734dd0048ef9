#pragma once

#include <string>

#include "Host/Archiver/contents/FileBytes.h"

namespace krutein {

/// Where the files of a backup go: to a disk, or nowhere when only their size is of interest. All functions
/// throw ToolError and Stopped.
class FileStore {
 public:
    virtual ~FileStore() = default;

    /// Stores a file of the device.
    virtual void PutFile(const std::string& fileId, FileBytes bytes) = 0;

    /// Where to write a database that is a file of the device; "" for nowhere.
    virtual std::string DatabasePath(const std::string& fileId) = 0;

    /// Where to write the catalogue; "" for nowhere.
    virtual std::string CataloguePath() = 0;

    /// Stores a file that describes the backup, in the place of one of that name.
    virtual void PutDescription(const std::string& name, const std::string& content) = 0;
};

/// Keeps nothing.
class NoStore : public FileStore {
 public:
    void PutFile(const std::string& /*fileId*/, FileBytes /*bytes*/) override {}
    std::string DatabasePath(const std::string& /*fileId*/) override { return {}; }
    std::string CataloguePath() override { return {}; }
    void PutDescription(const std::string& /*name*/, const std::string& /*content*/) override {}
};

}  // namespace krutein
