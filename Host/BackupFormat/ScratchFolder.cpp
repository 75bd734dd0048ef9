#include "Host/BackupFormat/ScratchFolder.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "Host/UniqueFd.h"

namespace fs = std::filesystem;

namespace krutein {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{256} * 1024;

[[noreturn]] void Throw(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void WriteAll(int to, const char* bytes, std::size_t count, const std::string& path) {
    while (count > 0) {
        const ssize_t written = write(to, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) Throw("cannot write " + path);
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

}  // namespace

ScratchFolder::ScratchFolder() : m_path((fs::temp_directory_path() / "kruteinctl-XXXXXX").string()) {
    if (mkdtemp(m_path.data()) == nullptr) Throw("cannot make a temporary folder " + m_path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::string ScratchFolder::Copy(const std::string& path, const std::string& name) const {
    // A pipe in the place of a file must not keep us waiting.
    const UniqueFd from(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!from.IsOpen()) Throw("cannot read " + path);
    std::string copy = m_path + "/" + name;
    const UniqueFd to(open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!to.IsOpen()) Throw("cannot write " + copy);
    std::vector<char> chunk(kChunkBytes);
    for (;;) {
        const ssize_t count = read(from.Get(), chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Throw("cannot read " + path);
        if (count == 0) return copy;
        WriteAll(to.Get(), chunk.data(), static_cast<std::size_t>(count), copy);
    }
}

}  // namespace krutein
