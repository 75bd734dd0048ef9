#include "Host/Archiver/BackupRun.h"

#include <utility>
#include <vector>

#include "Common/std/std_sha1.h"
#include "Host/Archiver/BackupPlists.h"

namespace krutein {
namespace {

std::string IdOf(const DeviceFile& file) {
    return STD_FILE_CalcDomainPathSha1A(file.domain, file.path);
}

/// The bytes of the folders that both paths begin with, each with its '/'.
std::size_t SharedFolders(const std::string& a, const std::string& b) {
    std::size_t shared = 0;
    for (std::size_t i = 0; i < a.size() && i < b.size() && a[i] == b[i]; ++i) {
        if (a[i] == '/') shared = i + 1;
    }
    return shared;
}

}  // namespace

BackupRun::BackupRun(const SampleDevice& device, FileStore& store, std::time_t time, FileDone fileDone)
    : m_device(device), m_store(store), m_time(time), m_fileDone(std::move(fileDone)) {}

BackupRun::~BackupRun() = default;

std::int64_t BackupRun::Write() {
    // First of all what tells which device it is, also of a backup that is never finished.
    PutDescription(kInfoName, InfoPlist(m_device, m_time));
    m_catalogue = CreateCatalogue(LayoutOf(m_device), m_store.CataloguePath());
    PlayContents(m_device, *this);
    m_bytes += m_catalogue->Finish();
    const std::vector<std::string> apps(m_apps.begin(), m_apps.end());
    PutDescription(kManifestName, ManifestPlist(m_device, m_time, apps));
    PutDescription(kStatusName, StatusPlist(m_device, m_time, SnapshotState::kFinished));
    return m_bytes;
}

void BackupRun::OnFile(const DeviceFile& file, FileBytes bytes) {
    const std::string fileId = IdOf(file);
    const std::int64_t size = bytes.Size();
    m_store.PutFile(fileId, std::move(bytes));
    AddFile(file, fileId, size);
}

void BackupRun::OnDatabase(const DeviceFile& file, const FillDatabase& fill) {
    const std::string fileId = IdOf(file);
    Database database = Database::Create(m_store.DatabasePath(fileId));
    fill(database);
    AddFile(file, fileId, database.Finish());
}

void BackupRun::OnLink(const DeviceFile& link, const std::string& target) {
    AddFoldersAbove(link);
    m_catalogue->Add({EntryKind::kLink, IdOf(link), link.domain, link.path, target, 0});
}

void BackupRun::PutDescription(const std::string& name, const std::string& content) {
    m_store.PutDescription(name, content);
    m_bytes += static_cast<std::int64_t>(content.size());
}

void BackupRun::AddFile(const DeviceFile& file, const std::string& fileId, std::int64_t size) {
    AddFoldersAbove(file);
    m_catalogue->Add({EntryKind::kFile, fileId, file.domain, file.path, "", size});
    m_bytes += size;
    m_fileDone(file.domain + "/" + file.path);
}

/// Only those that the file does not share with the one before: contents come folder by folder, and the
/// catalogue does not mind the few that come again.
void BackupRun::AddFoldersAbove(const DeviceFile& file) {
    const bool sameDomain = file.domain == m_previous.domain;
    if (!sameDomain) AddFolder(file.domain, "");
    std::size_t slash = sameDomain ? SharedFolders(file.path, m_previous.path) : 0;
    while ((slash = file.path.find('/', slash)) != std::string::npos)
        AddFolder(file.domain, file.path.substr(0, slash++));
    m_previous = file;
}

void BackupRun::AddFolder(const std::string& domain, const std::string& path) {
    constexpr std::size_t kPrefixChars = sizeof kAppDomainPrefix - 1;
    if (path.empty() && domain.compare(0, kPrefixChars, kAppDomainPrefix) == 0) {
        m_apps.insert(domain.substr(kPrefixChars));
    }
    m_catalogue->Add({EntryKind::kFolder, IdOf({domain, path}), domain, path, "", 0});
}

}  // namespace krutein
