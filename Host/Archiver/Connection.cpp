#include "Host/Archiver/Connection.h"

#include "Host/Archiver/ToolError.h"
#include "Host/SampleDevice/SampleDeviceFolder.h"

namespace krutein {

SampleDevice Connect(const std::string& udid) {
    const std::string folder = SampleDevicesFolder();
    try {
        if (auto device = FindSampleDevice(folder, udid)) return *std::move(device);
    } catch (const SampleDeviceError& error) {
        throw ToolError(kToolFailed, error.what());
    }
    throw ToolError(kToolNoDevice, "no device '" + udid + "' is connected: " + folder + " does not have it");
}

}  // namespace krutein
