#include "Common/std/folder.h"

#include <sys/stat.h>

#include <cstring>
#include <limits>

#include "Common/std/platform.h"

namespace krutein {
namespace {

/// One bit, so that more than folders count as such: what cannot be read is then left alone.
bool IsFolderType(unsigned type) {
    return (type & DT_DIR) != 0;
}

bool IsDots(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

}  // namespace

void FolderNames::Clear() {
    m_names.clear();
    m_entries.clear();
    m_hasFolder = false;
}

void FolderNames::Add(const char* name, bool isFolder) {
    m_entries.push_back({m_names.size(), isFolder});
    m_names.append(name).push_back('\0');
    m_hasFolder = m_hasFolder || isFolder;
}

bool OpenedFolder::Open(const std::string& path, bool followLink) {
    Close();
    m_path = path;
    m_stream = OpenFolderStream(path, followLink);
    return IsOpen();
}

void OpenedFolder::Close() {
    if (m_stream != nullptr) closedir(m_stream);
    m_stream = nullptr;
}

bool OpenedFolder::Read(FolderNames& names, std::size_t atMost) const {
    for (std::size_t read = 0; read < atMost;) {
        const dirent* const entry = readdir(m_stream);
        if (entry == nullptr) return false;
        if (IsDots(entry->d_name)) continue;
        ++read;
        unsigned type = entry->d_type;
        struct stat info {};
        // Some file systems do not tell the type of an entry.
        if (type == DT_UNKNOWN && StatIn(m_stream, m_path, entry->d_name, info)) {
            type = static_cast<unsigned>(IFTODT(info.st_mode));
        }
        names.Add(entry->d_name, IsFolderType(type));
    }
    return true;
}

void OpenedFolder::ReadAll(FolderNames& names) const {
    while (Read(names, std::numeric_limits<std::size_t>::max())) {
    }
}

long long OpenedFolder::BytesOf(const char* name) const {
    struct stat info {};
    return StatIn(m_stream, m_path, name, info) ? static_cast<long long>(info.st_size) : 0;
}

bool OpenedFolder::Remove(const char* name) const {
    return RemoveIn(m_stream, m_path, name);
}

}  // namespace krutein
