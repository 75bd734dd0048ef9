#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "Host/Archiver/Catalogue.h"
#include "Host/Archiver/FileStore.h"
#include "Host/Archiver/contents/Contents.h"
#include "Host/SampleDevice/SampleDevice.h"

namespace krutein {

/// Puts together a backup: everything on the device, its catalogue, and what describes the backup. The same
/// work with a store that keeps nothing tells how large the backup is going to be.
class BackupRun : private ContentReceiver {
 public:
    /// Called after each file, in its order, with "domain/path".
    using FileDone = std::function<void(const std::string&)>;

    /// \param device, store  outlive the run.
    /// \param time  of the backup, in seconds since 1970.
    BackupRun(const SampleDevice& device, FileStore& store, std::time_t time, FileDone fileDone);
    ~BackupRun() override;

    /// Does it all, once. \return the bytes of all files of the backup. \throws ToolError, Stopped
    std::int64_t Write();

 private:
    void OnFile(const DeviceFile& file, FileBytes bytes) override;
    void OnDatabase(const DeviceFile& file, const FillDatabase& fill) override;
    void OnLink(const DeviceFile& link, const std::string& target) override;

    void PutDescription(const std::string& name, const std::string& content);
    void AddFile(const DeviceFile& file, const std::string& fileId, std::int64_t size);
    void AddFoldersAbove(const DeviceFile& file);
    void AddFolder(const std::string& domain, const std::string& path);

    const SampleDevice& m_device;
    FileStore& m_store;
    std::time_t m_time;
    FileDone m_fileDone;
    std::unique_ptr<CatalogueWriter> m_catalogue;
    std::int64_t m_bytes = 0;
    DeviceFile m_previous;         ///< its folders are in the catalogue
    std::set<std::string> m_apps;  ///< bundle IDs of the domains so far
};

}  // namespace krutein
