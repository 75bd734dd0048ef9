#include "Host/kruteinctl/Status.h"

#include "Host/BackupFormat/SmallFile.h"
#include "Host/BackupFormat/SnapshotState.h"

namespace {

/// Those of devices have some hundred bytes.
constexpr std::size_t kMaxBytes = std::size_t{64} * 1024;

}  // namespace

bool IsFinished(const std::string& backup) {
    return krutein::SaysFinished(krutein::ReadSmallFile(backup + "/Status.plist", kMaxBytes));
}
