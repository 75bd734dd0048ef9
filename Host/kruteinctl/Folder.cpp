#include "Host/kruteinctl/Folder.h"

#include <fmt/format.h>
#include <stdlib.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"

namespace fs = std::filesystem;

namespace {

/// Leaves room for the tool's path and the other words in the library's 2048 characters.
constexpr std::size_t kMaxPathBytes = 1024;

const char* NameOf(char c) {
    switch (c) {
        case '"':
            return "a double quote";
        case '`':
            return "a backquote";
        case '$':
            return "a dollar sign";
        case '\\':
            return "a backslash";
        case '|':
            return "a vertical bar";
        case '\n':
        case '\r':
            return "a line end";
        default:
            return nullptr;
    }
}

[[noreturn]] void NotWritable(const std::string& folder, const std::string& why) {
    throw Failure(ExitCode::kNotWritable, fmt::format("cannot write to {}: {}", Printable(folder), why));
}

}  // namespace

std::string CheckedFolder(const std::string& folder) {
    if (folder.empty()) throw Failure(ExitCode::kUsage, "the folder's name is empty");
    std::error_code error;
    std::string path = fs::absolute(folder, error).lexically_normal().string();
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    for (const char c : path) {
        if (const char* const name = NameOf(c)) {
            throw Failure(
                ExitCode::kUsage,
                fmt::format("the folder's path holds {}, which cannot be handed to the backup tool: {}", name,
                            Printable(path)));
        }
    }
    if (path.size() > kMaxPathBytes) {
        throw Failure(ExitCode::kUsage, fmt::format("the folder's path is longer than {} bytes: {}",
                                                    kMaxPathBytes, Printable(path)));
    }
    return path;
}

void EnsureWritable(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder)) {
        NotWritable(folder, error ? error.message() : "it is not a folder");
    }
    // The answer of access() is not that of every file system; a try is.
    std::string probe = folder + "/.kruteinctl-XXXXXX";
    if (mkdtemp(probe.data()) == nullptr) NotWritable(folder, std::strerror(errno));
    rmdir(probe.c_str());
}

std::uint64_t FreeBytes(const std::string& folder) {
    struct statvfs info {};
    if (statvfs(folder.c_str(), &info) != 0) NotWritable(folder, std::strerror(errno));
    return static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
}
