#include "Host/Archiver/FolderTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"
#include "Host/UniqueFd.h"

namespace krutein {
namespace {

constexpr mode_t kFolderMode = 0755;
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

std::string PathIn(const std::string& folder, const std::string& name) {
    return folder + "/" + name;
}

/// A stream over a folder that is open already; the descriptor stays the caller's.
std::unique_ptr<DIR, CloseFolder> StreamOf(int folder, const std::string& path) {
    UniqueFd own(openat(folder, ".", kOpenFolder));
    if (!own.IsOpen()) ThrowErrno("cannot read " + path, errno);
    std::unique_ptr<DIR, CloseFolder> stream(fdopendir(own.Get()));
    if (stream == nullptr) ThrowErrno("cannot read " + path, errno);
    own.Release();
    return stream;
}

UniqueFd OpenFolderIn(int parent, const std::string& name, const std::string& path) {
    UniqueFd folder(openat(parent, name.c_str(), kOpenFolder));
    if (!folder.IsOpen()) ThrowErrno("cannot open " + path, errno);
    return folder;
}

void RemoveEntry(int parent, const std::string& name, const std::string& path) {
    if (unlinkat(parent, name.c_str(), 0) == 0) return;
    // What a system says about a folder here differs; only a folder can be opened as one.
    const int error = errno;
    UniqueFd folder(openat(parent, name.c_str(), kOpenFolder));
    if (!folder.IsOpen()) ThrowErrno("cannot remove " + path, error);
    RemoveAllBut(folder.Get(), "", path);
    folder.Close();
    if (unlinkat(parent, name.c_str(), AT_REMOVEDIR) != 0) ThrowErrno("cannot remove " + path, errno);
}

void AddSizes(int folder, const std::string& path, TreeSize& size) {
    ForEachName(folder, path, [&](const std::string& name) {
        struct stat info {};
        const std::string entry = PathIn(path, name);
        if (fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
            ThrowErrno("cannot read " + entry, errno);
        }
        if (S_ISDIR(info.st_mode)) {
            AddSizes(OpenFolderIn(folder, name, entry).Get(), entry, size);
        } else if (S_ISREG(info.st_mode)) {
            ++size.files;
            size.bytes += info.st_size;
        }
    });
}

}  // namespace

void MakeFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string folder = path.substr(0, slash);
        struct stat info {};
        // Folders that exist need not be writable, so they are not tried.
        const bool exists = stat(folder.c_str(), &info) == 0;
        if (!exists && mkdir(folder.c_str(), kFolderMode) != 0 && errno != EEXIST) {
            ThrowErrno("cannot create " + folder, errno);
        }
        if (slash == std::string::npos) return;
    }
}

void ForEachName(int folder, const std::string& path, const std::function<void(const std::string&)>& visit) {
    const auto stream = StreamOf(folder, path);
    for (;;) {
        ThrowIfStopped();
        errno = 0;
        const dirent* const entry = readdir(stream.get());
        if (entry == nullptr) break;
        const std::string name = entry->d_name;
        if (name != "." && name != "..") visit(name);
    }
    if (errno != 0) ThrowErrno("cannot read " + path, errno);
}

void RemoveAllBut(int folder, const std::string& keep, const std::string& path) {
    // Some file systems skip names while others are being removed: until a pass finds none.
    for (bool removed = true; removed;) {
        removed = false;
        ForEachName(folder, path, [&](const std::string& name) {
            if (name == keep) return;
            RemoveEntry(folder, name, PathIn(path, name));
            removed = true;
        });
    }
}

TreeSize MeasureTree(const std::string& path) {
    const UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.IsOpen()) ThrowErrno("cannot open " + path, errno);
    TreeSize size;
    AddSizes(folder.Get(), path, size);
    return size;
}

}  // namespace krutein
