#include "Common/std/folder.h"

#include <sys/stat.h>

#include <algorithm>
#include <climits>
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

bool OpenedFolder::OpenBelow(const OpenedFolder& root, const std::string& below) {
    Close();
    // Not deeper than a path can lead: who goes down such a tree does so on the stack.
    if (root.m_path.size() + below.size() >= PATH_MAX) return false;
    m_path = root.m_path;
    m_stream = OpenFolderIn(root.m_stream, m_path, ".");
    for (std::size_t begin = 0; IsOpen() && begin < below.size();) {
        const std::size_t end = std::min(below.find('/', begin), below.size());
        const std::string name = below.substr(begin, end - begin);
        DIR* const next = OpenFolderIn(m_stream, m_path, name.c_str());
        Close();
        m_stream = next;
        m_path.append("/").append(name);
        begin = end + 1;
    }
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

bool OpenedFolder::RemoveFolder(const char* name) const {
    return RemoveFolderIn(m_stream, m_path, name);
}

}  // namespace krutein
