#include "Host/BackupFormat/HashedFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>
#include <tuple>

#include "Host/UniqueFd.h"

namespace krutein {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

HashedFile::Kind KindOf(mode_t mode) {
    if (S_ISREG(mode)) return HashedFile::Kind::kFile;
    if (S_ISDIR(mode)) return HashedFile::Kind::kFolder;
    return S_ISLNK(mode) ? HashedFile::Kind::kLink : HashedFile::Kind::kOther;
}

std::string Joined(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + "/" + name;
}

/// The one to be found first in front.
bool ComesFirst(const HashedFile& a, const HashedFile& b) {
    if (!(a.id == b.id)) return a.id < b.id;
    const auto rank = [](const HashedFile& file) {
        return std::make_tuple(!file.inPlace, file.kind != HashedFile::Kind::kFile, file.folder);
    };
    return rank(a) != rank(b) ? rank(a) < rank(b) : a.spelling < b.spelling;
}

}  // namespace

HashedFiles::HashedFiles(const std::string& backup, BackupLayout layout, Where where,
                         const Interrupt& interrupt)
    : m_layout(layout), m_where(where), m_folders{""} {
    const UniqueFd root(open(backup.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!root.IsOpen()) throw std::system_error(errno, std::generic_category(), "cannot read " + backup);
    // Grows while it is gone through.
    for (std::size_t folder = 0; folder < m_folders.size(); ++folder)
        List(root.Get(), folder, interrupt);
    std::sort(m_files.begin(), m_files.end(), ComesFirst);
}

const HashedFile* HashedFiles::Find(const FileId& id) const {
    const auto found =
        std::lower_bound(m_files.begin(), m_files.end(), id,
                         [](const HashedFile& file, const FileId& wanted) { return file.id < wanted; });
    return found == m_files.end() || !(found->id == id) || !found->inPlace ? nullptr : &*found;
}

std::string HashedFiles::PathOf(const HashedFile& file) const {
    return Joined(m_folders[file.folder], file.spelling.empty() ? file.id.Text() : file.spelling);
}

void HashedFiles::List(int backup, std::size_t folder, const Interrupt& interrupt) {
    const std::string path = m_folders[folder].empty() ? "." : m_folders[folder];
    UniqueFd parent(openat(backup, path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseFolder> entries(parent.IsOpen() ? fdopendir(parent.Get()) : nullptr);
    if (entries == nullptr) {
        m_unreadable.push_back(path + ": " + std::generic_category().message(errno));
        return;
    }
    static_cast<void>(parent.Release());  // it is the entries' now
    while (const dirent* const entry = readdir(entries.get())) {
        interrupt.Check();
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        Take(dirfd(entries.get()), folder, name, entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN);
    }
}

void HashedFiles::Take(int parent, std::size_t folder, const std::string& name, bool mayBeFolder) {
    const std::optional<FileId> id = FileId::Parse(name);
    if (!id && !mayBeFolder) return;
    struct stat info {};
    if (fstatat(parent, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        m_unreadable.push_back(Joined(m_folders[folder], name) + ": " +
                               std::generic_category().message(errno));
        return;
    }
    if (S_ISDIR(info.st_mode) && IsOfInterest(folder, name)) {
        m_folders.push_back(Joined(m_folders[folder], name));
    }
    if (!id) return;
    HashedFile file;
    file.id = *id;
    file.kind = KindOf(info.st_mode);
    file.inPlace = Lower(m_folders[folder]) == id->FolderIn(m_layout);
    file.bytes = static_cast<std::uint64_t>(info.st_size);
    file.folder = folder;
    if (name != id->Text()) file.spelling = name;
    m_files.push_back(std::move(file));
}

/// Whether a folder is to be looked into.
bool HashedFiles::IsOfInterest(std::size_t parent, const std::string& name) const {
    if (m_where == Where::kAnywhere) return true;
    const bool isPlace =
        name.size() == 2 && name.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return m_layout == BackupLayout::kNewer && parent == 0 && isPlace;
}

}  // namespace krutein
