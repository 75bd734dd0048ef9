#include "Host/kruteinctl/WorkFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"

namespace fs = std::filesystem;

namespace {

constexpr char kMark[] = "/.kruteinctl";

[[noreturn]] void CannotMake(const std::string& path, const std::string& why) {
    throw Failure(ExitCode::kNotWritable, fmt::format("cannot make {}: {}", Printable(path), why));
}

/// Opens the mark of a folder that is there already. \return its descriptor, locked.
int TakeOver(const std::string& path) {
    const int mark = open((path + kMark).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (mark < 0) {
        CannotMake(path,
                   "something of this name is there already and is not kruteinctl's. The folder is needed "
                   "while a backup runs, and removed afterwards: move it away, or choose another --to");
    }
    if (flock(mark, LOCK_EX | LOCK_NB) == 0) return mark;
    close(mark);
    throw Failure(ExitCode::kFailed, fmt::format("another backup into {} is running",
                                                 Printable(fs::path(path).parent_path().string())));
}

}  // namespace

WorkFolder::WorkFolder(const std::string& folder) : m_path((fs::path(folder) / "temp").string()) {
    std::error_code error;
    const fs::file_type type = fs::symlink_status(m_path, error).type();
    if (type == fs::file_type::directory && fs::is_empty(m_path, error)) {
        rmdir(m_path.c_str());
    } else if (type != fs::file_type::not_found) {
        const int mark = TakeOver(m_path);  // of a run that was killed
        fs::remove_all(m_path, error);
        close(mark);
    }
    if (!fs::create_directory(m_path, error))
        CannotMake(m_path, error ? error.message() : "it is there again");
    m_mark = open((m_path + kMark).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (m_mark < 0 || flock(m_mark, LOCK_EX | LOCK_NB) != 0) CannotMake(m_path, std::strerror(errno));
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
    close(m_mark);
}
