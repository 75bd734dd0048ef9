#include "Host/Archiver/Connection.h"
#include "Host/Archiver/Password.h"
#include "Host/Archiver/ToolError.h"
#include "Host/Archiver/jobs/Jobs.h"

namespace krutein {

void ChangePassword(const CommandLine& command) {
    const SampleDevice device = Connect(command.target);
    const StoredPassword stored(device.udid);
    if (!stored.Is(command.oldPassword)) {
        throw ToolError(kToolWrongPassword, "the backup password of " + device.udid + " is another");
    }
    stored.Set(command.newPassword);
}

}  // namespace krutein
