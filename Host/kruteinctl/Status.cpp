#include "Host/kruteinctl/Status.h"

#include <fcntl.h>

#include <cerrno>

#include "Host/BackupFormat/SnapshotState.h"
#include "Host/UniqueFd.h"

namespace {

/// Those of devices have some hundred bytes.
constexpr std::size_t kMaxBytes = std::size_t{64} * 1024;

}  // namespace

bool IsFinished(const std::string& backup) {
    // A pipe in the place of the file must not keep us waiting.
    const krutein::UniqueFd file(
        open((backup + "/Status.plist").c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::string content(kMaxBytes, '\0');
    const ssize_t count = file.IsOpen() ? read(file.Get(), content.data(), content.size()) : 0;
    if (count <= 0) return false;
    content.resize(static_cast<std::size_t>(count));
    return krutein::SaysFinished(content);
}
