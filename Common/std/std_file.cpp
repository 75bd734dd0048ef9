#include "Common/std/std_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include "Common/std/folder.h"
#include "Common/std/format.h"
#include "Common/std/read_file.h"
#include "Common/std/std_objc.h"
#include "Common/std/std_path.h"
#include "Common/std/std_string.h"

using krutein::FolderNames;
using krutein::OpenedFolder;

namespace {

constexpr mode_t kFolderMode = 0755;
constexpr std::size_t kCopyChunkBytes = 4096;

struct CloseStream {
    void operator()(FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<FILE, CloseStream>;

Stream Open(const std::string& path, const char* mode) {
    return Stream(std::fopen(path.c_str(), mode));
}

/// The file's length, the stream rewound; -1 for folders, which some systems open like files, and for streams
/// that have no end.
long long LengthOf(FILE* file) {
    struct stat info {};
    if (fstat(fileno(file), &info) != 0 || S_ISDIR(info.st_mode)) return -1;
    if (fseeko(file, 0, SEEK_END) != 0) return -1;
    const long long length = ftello(file);
    std::rewind(file);
    return length;
}

unsigned int SizeOf(const std::string& path, const char* mode) {
    const Stream file = Open(path, mode);
    if (file == nullptr) return 0;
    const long long length = LengthOf(file.get());
    return length < 0 ? 0U : static_cast<unsigned int>(length);
}

bool MakeFolder(const std::string& path) {
    return mkdir(path.c_str(), kFolderMode) == 0 || errno == EEXIST;
}

struct Listing {
    std::vector<std::string>& files;
    std::vector<std::string>& dirs;
    long long& total;
};

bool List(const std::string& dir, Listing& listing, bool recursive) {
    OpenedFolder folder;
    if (!folder.Open(dir, true)) return false;
    FolderNames names;
    folder.ReadAll(names);
    std::vector<long long> sizes;
    for (const FolderNames::Entry& entry : names.Entries())
        sizes.push_back(entry.isFolder ? 0 : folder.BytesOf(names.NameOf(entry)));
    folder.Close();
    const std::string prefix = dir + STD_PATH_GetDefaultSeparatorA();
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const FolderNames::Entry& entry = names.Entries()[i];
        std::string path = prefix + names.NameOf(entry);
        if (!entry.isFolder) {
            listing.files.push_back(std::move(path));
            listing.total += sizes[i];
            continue;
        }
        listing.dirs.push_back(path);
        if (recursive) List(path, listing, true);
    }
    return true;
}

/// Copies until the end of the source or until a write takes less than it was given.
void CopyBytes(FILE* source, FILE* destination) {
    char chunk[kCopyChunkBytes];
    std::size_t length = 0;
    do {
        length = std::fread(chunk, 1, sizeof chunk, source);
    } while (length > 0 && std::fwrite(chunk, 1, length, destination) == length);
}

/// The result of a command is what is on disk afterwards, not how its process ended.
void RunCommand(const std::string& command) {
    [[maybe_unused]] const int status = std::system(command.c_str());
}

}  // namespace

bool krutein::ReadFile(std::string path, FileContent& content,
                       const std::function<void(const char* piece, std::size_t bytes)>& arrived) {
    STD_PATH_FormatA(path);
    const Stream file = Open(path, "rb");
    if (file == nullptr) return false;
    const long long length = LengthOf(file.get());
    if (length <= 0 || length >= INT_MAX) return false;
    const auto size = static_cast<std::size_t>(length);
    content.bytes.reset(static_cast<char*>(std::malloc(size + 1)));
    if (content.bytes == nullptr) return false;
    for (content.size = 0; content.size < size;) {
        char* const piece = content.bytes.get() + content.size;
        const std::size_t bytes = std::min(size - content.size, kReadPieceBytes);
        if (std::fread(piece, 1, bytes, file.get()) != bytes) return false;
        if (arrived) arrived(piece, bytes);
        content.size += bytes;
    }
    content.bytes.get()[size] = '\0';
    return true;
}

FILE* STD_FILE_OpenA(std::string path, std::string mode) {
    return std::fopen(path.c_str(), mode.c_str());
}

FILE* STD_FILE_OpenW(std::wstring /*path*/, std::wstring /*mode*/) {
    return nullptr;
}

bool STD_FILE_EnsureDirExistA(std::string path) {
    STD_PATH_RemoveSlashA(path);
    if (path.empty()) return false;
    if (STD_PATH_ExistA(path)) return true;
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        const std::string parent = path.substr(0, slash);
        if (!STD_PATH_ExistA(parent) && !MakeFolder(parent)) break;
    }
    MakeFolder(path);
    return STD_PATH_ExistA(path);
}

bool STD_FILE_EnsureDirExistW(std::wstring path) {
    return STD_PATH_ExistW(std::move(path));
}

unsigned int STD_FILE_GetFileSizeA(std::string path) {
    return SizeOf(path, "r");
}

unsigned int STD_FILE_GetFileSizeW(std::wstring /*path*/) {
    return 0;
}

unsigned int STD_FILE_CalcSizeA(std::string path) {
    STD_PATH_FormatA(path);
    return SizeOf(path, "rb");
}

unsigned int STD_FILE_CalcSizeW(std::wstring /*path*/) {
    return 0;
}

bool STD_FILE_GetDirInfoA(std::string dir, std::vector<std::string>& files, std::vector<std::string>& dirs,
                          long long& total, bool recursive) {
    if (!STD_PATH_ExistA(dir)) return false;
    STD_PATH_RemoveSlashA(dir);
    Listing listing{files, dirs, total};
    return List(dir, listing, recursive);
}

bool STD_FILE_GetDirInfoW(std::wstring dir, std::vector<std::wstring>& /*files*/,
                          std::vector<std::wstring>& /*dirs*/, long long& /*total*/, bool /*recursive*/) {
    return STD_PATH_ExistW(std::move(dir));
}

long long STD_FILE_GetDirSizeA(std::string dir) {
    STD_PATH_RemoveSlashA(dir);
    return krutein::FolderBytes(dir);
}

long long STD_FILE_GetDirSizeW(std::wstring /*dir*/) {
    return 0;
}

bool STD_FILE_GetDirFileListA(std::string dir, std::vector<std::string>& files, bool recursive) {
    std::vector<std::string> dirs;
    long long total = 0;
    return STD_FILE_GetDirInfoA(std::move(dir), files, dirs, total, recursive);
}

bool STD_FILE_GetDirFileListW(std::wstring dir, std::vector<std::wstring>& /*files*/, bool /*recursive*/) {
    return STD_PATH_ExistW(std::move(dir));
}

bool STD_FILE_IsDirEmptyA(std::string dir) {
    std::vector<std::string> files;
    std::vector<std::string> dirs;
    long long total = 0;
    STD_FILE_GetDirInfoA(std::move(dir), files, dirs, total, false);
    return files.empty() && dirs.empty();
}

bool STD_FILE_IsDirEmptyW(std::wstring /*dir*/) {
    return true;
}

char* STD_FILE_ReadBufA(std::string path, int* size) {
    krutein::FileContent content;
    if (!krutein::ReadFile(std::move(path), content, nullptr)) return nullptr;
    if (size != nullptr) *size = static_cast<int>(content.size);
    return content.bytes.release();
}

char* STD_FILE_ReadBufW(std::wstring /*path*/, int* /*size*/) {
    return nullptr;
}

bool STD_FILE_WriteBufA(std::string path, const void* data, int length) {
    if (length < 0) return false;
    STD_PATH_FormatA(path);
    const Stream file = Open(path, "wb");
    if (file == nullptr) return false;
    if (data != nullptr) std::fwrite(data, 1, static_cast<std::size_t>(length), file.get());
    return true;
}

bool STD_FILE_WriteBufW(std::wstring /*path*/, const void* /*data*/, int /*length*/) {
    return false;
}

bool STD_FILE_DeleteFileA(std::string path) {
    STD_PATH_FormatA(path);
    return std::remove(path.c_str()) == 0;
}

bool STD_FILE_DeleteFileW(std::wstring /*path*/) {
    return false;
}

bool STD_FILE_CopyFileA(std::string source, std::string destination, bool /*overwrite*/) {
    STD_PATH_FormatA(source);
    STD_PATH_FormatA(destination);
    const Stream from = Open(source, "r");
    const Stream to = Open(destination, "w");
    if (from != nullptr && to != nullptr) CopyBytes(from.get(), to.get());
    return true;
}

bool STD_FILE_CopyFileW(std::wstring /*source*/, std::wstring /*destination*/, bool /*overwrite*/) {
    return false;
}

int STD_FILE_SHFileOperationA(int /*operation*/, const char* /*source*/, const char* /*destination*/) {
    return 0;
}

int STD_FILE_SHFileOperationW(int /*operation*/, const wchar_t* /*source*/, const wchar_t* /*destination*/) {
    return 0;
}

bool STD_FILE_DeleteDirA(std::string dir) {
    STD_PATH_RemoveSlashA(dir);
    std::string command;
    if (!krutein::FormatWhole(command, "rm -rf \"%s\"", dir.c_str())) return false;
    RunCommand(command);
    return !STD_PATH_ExistA(dir);
}

bool STD_FILE_DeleteDirW(std::wstring /*dir*/) {
    return false;
}

bool STD_FILE_CopyDirA(std::string source, std::string destination, int* pid) {
    STD_PATH_RemoveSlashA(source);
    STD_PATH_RemoveSlashA(destination);
    std::string command;
    if (!krutein::FormatWhole(command, "cp -r \"%s\" \"%s\"", source.c_str(), destination.c_str()))
        return false;
    if (STD_OBJC_System(command.c_str(), pid, true, nullptr) != 0) return false;
    return STD_PATH_ExistA(destination) && (pid == nullptr || *pid > 0);
}

bool STD_FILE_CopyDirW(std::wstring /*source*/, std::wstring /*destination*/, int* /*pid*/) {
    return false;
}

bool STD_FILE_RenameDirA(std::string oldPath, std::string newPath) {
    STD_PATH_RemoveSlashA(oldPath);
    STD_PATH_RemoveSlashA(newPath);
    std::string command;
    if (!krutein::FormatWhole(command, "mv \"%s\" \"%s\"", oldPath.c_str(), newPath.c_str())) return false;
    RunCommand(command);
    return STD_PATH_ExistA(newPath);
}

bool STD_FILE_RenameDirW(std::wstring /*oldPath*/, std::wstring /*newPath*/) {
    return false;
}

bool STD_FILE_DeleteEmptyDirA(std::string dir) {
    STD_PATH_FormatA(dir);
    if (!STD_PATH_ExistA(dir)) return true;
    rmdir(dir.c_str());
    return !STD_PATH_ExistA(dir);
}

bool STD_FILE_DeleteEmptyDirW(std::wstring dir) {
    return !STD_PATH_ExistW(std::move(dir));
}
