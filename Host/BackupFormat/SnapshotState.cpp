#include "Host/BackupFormat/SnapshotState.h"

#include "Host/BackupFormat/BinaryPlistReader.h"

namespace krutein {

bool SaysFinished(std::string_view status) {
    const std::optional<BinaryPlistReader> plist = BinaryPlistReader::Open(status);
    if (!plist) return false;
    const auto state = plist->Member(plist->Top(), kSnapshotStateKey);
    return state && plist->Text(*state) == kFinishedState;
}

}  // namespace krutein
