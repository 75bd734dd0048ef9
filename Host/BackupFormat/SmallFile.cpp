#include "Host/BackupFormat/SmallFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "Host/UniqueFd.h"

namespace krutein {

std::string ReadSmallFile(const std::string& path, std::size_t maxBytes) {
    // A pipe in the place of the file must not keep us waiting.
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!file.IsOpen() || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    if (static_cast<std::uintmax_t>(info.st_size) > maxBytes) return {};
    std::string content(static_cast<std::size_t>(info.st_size), '\0');
    std::size_t taken = 0;
    while (taken < content.size()) {
        const ssize_t count = read(file.Get(), content.data() + taken, content.size() - taken);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        taken += static_cast<std::size_t>(count);
    }
    content.resize(taken);
    return content;
}

}  // namespace krutein
